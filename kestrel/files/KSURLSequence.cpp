// The numbered sequences of KSURL: the placeholder and the range are found in the path as a person reads
// it, and a member's URL is made from the escaped text, so that no byte of the path is lost.
#include <kestrel/files/KSURL.h>

#include <kestrel/platform/detail/CFOwner.h>
#include <kestrel/platform/detail/URLObject.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using kestrel::detail::CFOwner;
using kestrel::detail::escapePath;
using kestrel::detail::unescape;

namespace {

using std::string_view;

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What KSURL::getString gives, for as long as it is looked at.
struct PathText {
    explicit PathText(const KSURL& url) : bytes(url.getString(&length)) {}
    string_view view() const { return {bytes.get(), length}; }

    unsigned int length = 0;
    std::unique_ptr<char[]> bytes;
};

/// The placeholder, brackets included, when the last pair of brackets in the last segment is one.
std::optional<string_view> findPlaceholder(string_view text) {
    const std::size_t close = text.find_last_of("]/");
    if (close == text.npos || text[close] == '/') return std::nullopt;
    const string_view before = text.substr(0, close);
    const std::size_t open = before.find_last_not_of("#@");
    if (open == text.npos || text[open] != '[' || open + 1 == close) return std::nullopt;
    return text.substr(open, close + 1 - open);
}

/// The integer that text begins with, after blanks and a sign; one that no int holds is the nearest limit.
std::optional<int> readInteger(string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || !isDigit(text[0])) return std::nullopt;

    const long limit = std::numeric_limits<int>::max() + (negative ? 1L : 0L);
    long value = 0;
    for (; !text.empty() && isDigit(text[0]); text.remove_prefix(1))
        value = std::min(value * 10 + (text[0] - '0'), limit);
    return static_cast<int>(negative ? -value : value);
}

/// The integer after the first colon from the end, not counting the first `skip` ones, that has one; -1
/// when none has in the last segment.
int numberAfterColon(string_view text, int skip) {
    for (std::size_t i = text.size(); i-- > 0 && text[i] != '/';) {
        if (text[i] != ':' || skip-- > 0) continue;
        if (const auto number = readInteger(text.substr(i + 1))) return *number;
    }
    return -1;
}

int readStart(string_view text) { return numberAfterColon(text, 1); }
int readEnd(string_view text) { return numberAfterColon(text, 0); }

/// The path without the range ":start:end" at its end. Either number may be missing; of a lone colon, the
/// number may not. Digits that belong to the name stay.
string_view withoutRange(string_view path) {
    std::size_t begin = path.size();
    const auto passNumber = [&] {
        const std::size_t end = begin;
        while (begin > 0 && isDigit(path[begin - 1])) --begin;
        if (begin > 0 && begin < end && (path[begin - 1] == '-' || path[begin - 1] == '+')) --begin;
        return begin < end;
    };
    const auto passColon = [&] { return begin > 0 && path[begin - 1] == ':' && begin--; };

    const bool hasEnd = passNumber();
    if (!passColon()) return path;
    const std::size_t lastColon = begin;
    passNumber();
    if (passColon()) return path.substr(0, begin);
    return hasEnd ? path.substr(0, lastColon) : path;
}

/// The same escaped path in the one spelling that escapePath gives, but an escaped slash stays escaped.
std::string respell(string_view escaped) {
    std::string path;
    path.reserve(escaped.size());
    while (!escaped.empty()) {
        const std::size_t size = escaped[0] == '%' ? 3 : 1;  // a URL's text holds whole escapes only
        const std::string byte = unescape(escaped.substr(0, size));
        path += size == 3 && byte == "/" ? "%2F" : escapePath(byte);
        escaped.remove_prefix(size);
    }
    return path;
}

void replaceAll(std::string& text, string_view what, string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
        text.replace(at, what.size(), with);
}

/// The number of a member as the placeholder asks for it: unpadded for any "@", else as wide as its "#".
std::string numberText(string_view placeholder, long long number) {
    const std::size_t width = placeholder.find('@') == placeholder.npos ? placeholder.size() - 2 : 0;
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0').append(digits);
}

}  // namespace

bool KSURL::isSequence() const {
    const PathText path(*this);
    return findPlaceholder(path.view()).has_value();
}

int KSURL::getSequenceStart() const {
    const PathText path(*this);
    return readStart(path.view());
}

int KSURL::getSequenceEnd() const {
    const PathText path(*this);
    return readEnd(path.view());
}

int KSURL::getSequenceStart(char* text, unsigned int length) const {
    return text ? readStart({text, length}) : -1;
}

int KSURL::getSequenceEnd(char* text, unsigned int length) const {
    return text ? readEnd({text, length}) : -1;
}

int KSURL::getSequenceLength() const {
    using Limits = std::numeric_limits<int>;
    const long long length = static_cast<long long>(getSequenceEnd()) - getSequenceStart() + 1;
    return static_cast<int>(std::clamp<long long>(length, Limits::min(), Limits::max()));
}

KSURL KSURL::getURLforIndex(unsigned int index) const {
    if (!m_url) return KSURL();
    const PathText path(*this);
    const auto placeholder = findPlaceholder(path.view());
    if (!placeholder) return KSURL();

    const long long start = readStart(path.view());
    const long long end = readEnd(path.view());
    // Without a start, every index has a member; so it has with a start and no end.
    if (end - start < index && start >= 0 && end >= 0) return KSURL();

    // Escapes may be spelled in many ways; in one spelling the placeholder is found wherever it stands.
    const std::string respelled = respell(m_url->getPath());
    std::string member(withoutRange(respelled));
    replaceAll(member, escapePath(*placeholder), numberText(*placeholder, std::max(start, 0LL) + index));
    if (m_url->pathStart == 0) {  // a colon in a relative path's first segment would read as a scheme
        std::string first = member.substr(0, member.find('/'));
        member.erase(0, first.size());
        replaceAll(first, ":", "%3A");
        member.insert(0, first);
    }
    member.insert(0, m_url->text, 0, m_url->pathStart).append(m_url->text, m_url->pathEnd);
    const CFOwner string(
        CFStringCreateWithCString(kCFAllocatorDefault, member.c_str(), kCFStringEncodingUTF8));
    KSURL url;
    url.m_url = CFURLCreateWithString(kCFAllocatorDefault, string.get(), nullptr);
    return url;
}
