#include <kestrel/platform/detail/StringTable.h>

#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/Utf8.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace kestrel::detail {

namespace {

using Units = std::span<const UniChar>;

int hexDigit(UniChar unit) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
    return -1;
}

bool isBlank(UniChar unit) { return unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n'; }

bool isWord(UniChar unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           unit == '_' || unit == '.' || unit == '-';
}

/// Reads the tokens of a table one after the other. The first fault is kept, and nothing is read after it.
class Scanner {
public:
    explicit Scanner(Units text) : m_text(text) {}

    /// Skips blanks and comments; true when something follows.
    bool hasMore() {
        while (m_at < m_text.size()) {
            if (isBlank(m_text[m_at])) {
                ++m_at;
            } else if (startsWith("//")) {
                while (m_at < m_text.size() && m_text[m_at] != '\n') ++m_at;
            } else if (startsWith("/*")) {
                const std::size_t start = m_at;
                m_at += 2;
                while (m_at < m_text.size() && !startsWith("*/")) ++m_at;
                if (m_at == m_text.size()) return fail(start, "a comment that never ends");
                m_at += 2;
            } else {
                return true;
            }
        }
        return false;
    }

    bool take(char mark) {
        if (!hasMore() || m_text[m_at] != static_cast<UniChar>(mark)) return false;
        ++m_at;
        return true;
    }
    bool expect(char mark) { return take(mark) || fail(m_at, std::string("expected '") + mark + "'"); }

    /// A quoted text or a bare word.
    bool expectText(std::vector<UniChar>& text) {
        text.clear();
        if (take('"')) return readQuoted(text);
        if (hasMore())
            while (m_at < m_text.size() && isWord(m_text[m_at])) text.push_back(m_text[m_at++]);
        return !text.empty() || fail(m_at, "expected a text");
    }

    const std::string& getFault() const { return m_fault; }
    std::size_t getFaultLine() const {
        return 1 + static_cast<std::size_t>(std::ranges::count(m_text.first(m_faultAt), UniChar{'\n'}));
    }

private:
    bool startsWith(const char (&mark)[3]) const {
        return m_at + 1 < m_text.size() && m_text[m_at] == static_cast<UniChar>(mark[0]) &&
               m_text[m_at + 1] == static_cast<UniChar>(mark[1]);
    }
    bool fail(std::size_t at, std::string fault) {
        if (m_fault.empty()) {
            m_fault = std::move(fault);
            m_faultAt = std::min(at, m_text.size());
            m_text = m_text.first(m_at = m_text.size());
        }
        return false;
    }
    bool readQuoted(std::vector<UniChar>& text) {
        const std::size_t start = m_at;
        while (m_at < m_text.size()) {
            const UniChar unit = m_text[m_at++];
            if (unit == '"') return true;
            if (unit != '\\') {
                text.push_back(unit);
                continue;
            }
            const std::optional<UniChar> escaped = readEscape();
            if (!escaped) return fail(m_at, "an unknown escape");
            text.push_back(*escaped);
        }
        return fail(start, "a text that never ends");
    }
    /// What stands behind a backslash.
    std::optional<UniChar> readEscape() {
        if (m_at == m_text.size()) return std::nullopt;
        switch (const UniChar unit = m_text[m_at++]) {
            case 'n':
                return UniChar{'\n'};
            case 'r':
                return UniChar{'\r'};
            case 't':
                return UniChar{'\t'};
            case '"':
            case '\'':
            case '\\':
                return unit;
            case 'U':
                break;
            default:
                return std::nullopt;
        }
        unsigned value = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = m_at < m_text.size() ? hexDigit(m_text[m_at]) : -1;
            if (digit < 0) return std::nullopt;
            value = value << 4 | static_cast<unsigned>(digit);
            ++m_at;
        }
        return static_cast<UniChar>(value);
    }

    Units m_text;
    std::size_t m_at = 0;
    std::string m_fault;
    std::size_t m_faultAt = 0;
};

CFStringRef createText(std::span<const char> bytes) {
    const auto isMark = [&](char first, char second) {
        return bytes.size() >= 2 && bytes[0] == first && bytes[1] == second;
    };
    const bool isUtf16 = isMark('\xFF', '\xFE') || isMark('\xFE', '\xFF');
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                   static_cast<CFIndex>(bytes.size()),
                                   isUtf16 ? kCFStringEncodingUTF16 : kCFStringEncodingUTF8, true);
}

}  // namespace

StringTable::StringTable(std::span<const char> bytes, std::string_view name) {
    CFStringRef file = createText(bytes);
    if (!file) {
        m_error = std::string(name) + ":1: the text is neither UTF-8 nor UTF-16 with a byte-order mark";
        return;
    }
    Scanner scanner(file->getUnits());
    std::vector<UniChar> key, text;
    while (scanner.hasMore()) {
        if (!scanner.expectText(key) || !scanner.expect('=') || !scanner.expectText(text) ||
            !scanner.expect(';'))
            break;
        CFStringRef& entry = m_texts[utf8Of(key)];
        CFRelease(entry);
        entry = __CFString::make(text);
    }
    if (!scanner.getFault().empty())
        m_error =
            std::string(name) + ":" + std::to_string(scanner.getFaultLine()) + ": " + scanner.getFault();
    CFRelease(file);
}

StringTable::~StringTable() {
    for (const auto& [key, text] : m_texts) CFRelease(text);
}

CFStringRef StringTable::find(const std::string& key) const {
    const auto entry = m_texts.find(key);
    return entry == m_texts.end() ? nullptr : entry->second;
}

}  // namespace kestrel::detail
