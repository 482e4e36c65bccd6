#include <kestrel/platform/detail/Collation.h>

#include <kestrel/platform/detail/UserLocale.h>

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace kestrel::detail {

namespace {

int sign(bool isLess, bool isGreater) { return static_cast<int>(isGreater) - static_cast<int>(isLess); }

/// ICU counts in 32 bits; two texts that differ only beyond two thousand million units are equal to it.
std::int32_t sizeForIcu(std::span<const UniChar> text) {
    return static_cast<std::int32_t>(
        std::min<std::size_t>(text.size(), std::numeric_limits<std::int32_t>::max()));
}

/// The units of a text after case folding, one after the other.
class FoldedUnits {
public:
    explicit FoldedUnits(std::span<const UniChar> units) : m_units(units) {}

    /// The next unit, or -1 at the end.
    int next() noexcept {
        if (m_pending >= 0) {
            const int low = m_pending;
            m_pending = -1;
            return low;
        }
        if (m_at == m_units.size()) return -1;
        const int unit = m_units[m_at];
        if (unit < 0x80) {
            ++m_at;
            return unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit;
        }
        UChar32 character;
        U16_NEXT(m_units.data(), m_at, m_units.size(), character);
        character = u_foldCase(character, U_FOLD_CASE_DEFAULT);
        if (character < 0x10000) return character;
        m_pending = U16_TRAIL(character);
        return U16_LEAD(character);
    }

private:
    std::span<const UniChar> m_units;
    std::size_t m_at = 0;
    int m_pending = -1;
};

/// The collators of one locale. Letters that differ in case only differ at the third level.
class Collators {
public:
    Collators() = default;
    Collators(const Collators&) = delete;
    Collators& operator=(const Collators&) = delete;
    ~Collators() { close(); }

    /// Null when there is no collation data at all.
    const UCollator* get(const char* locale, Case letters) {
        if (std::strcmp(m_locale.c_str(), locale) != 0) open(locale);
        return letters == Case::Matters ? m_exact : m_caseless;
    }

private:
    void open(const char* locale) {
        close();
        m_locale = locale;
        // "de_DE.UTF-8@euro" is de_DE to ICU.
        const std::string plain = m_locale.substr(0, m_locale.find_first_of(".@"));
        m_exact = openAt(plain.c_str(), UCOL_TERTIARY);
        m_caseless = openAt(plain.c_str(), UCOL_SECONDARY);
    }
    static UCollator* openAt(const char* locale, UCollationStrength strength) {
        UErrorCode status = U_ZERO_ERROR;
        UCollator* collator = ucol_open(locale, &status);
        if (U_FAILURE(status)) return nullptr;
        ucol_setStrength(collator, strength);
        ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
        return collator;
    }
    void close() {
        ucol_close(m_exact);
        ucol_close(m_caseless);
        m_exact = m_caseless = nullptr;
    }

    std::string m_locale;
    UCollator* m_exact = nullptr;
    UCollator* m_caseless = nullptr;
};

/// The order of the first units that differ in two words of text.
int compareWords(std::uint64_t left, std::uint64_t right) noexcept {
    const std::uint64_t difference = left ^ right;
    const int shift = std::endian::native == std::endian::little
                          ? std::countr_zero(difference) / 16 * 16
                          : 48 - std::countl_zero(difference) / 16 * 16;
    return static_cast<UniChar>(left >> shift) < static_cast<UniChar>(right >> shift) ? -1 : 1;
}

/// Orders by code unit.
int compareExactly(std::span<const UniChar> left, std::span<const UniChar> right) noexcept {
    constexpr std::size_t unitsAWord = sizeof(std::uint64_t) / sizeof(UniChar);
    const std::size_t common = std::min(left.size(), right.size());
    if (common < unitsAWord) {
        for (std::size_t i = 0; i < common; ++i)
            if (left[i] != right[i]) return left[i] < right[i] ? -1 : 1;
    } else {
        for (std::size_t i = 0;; i = std::min(i + unitsAWord, common - unitsAWord)) {
            std::uint64_t l, r;
            std::memcpy(&l, &left[i], sizeof l);
            std::memcpy(&r, &right[i], sizeof r);
            if (l != r) return compareWords(l, r);
            if (i == common - unitsAWord) break;
        }
    }
    return sign(left.size() < right.size(), left.size() > right.size());
}

// The rare ways are not part of the short one, which so needs no frame on the stack.

[[gnu::noinline]] int compareFolded(std::span<const UniChar> left, std::span<const UniChar> right) noexcept {
    FoldedUnits l(left), r(right);
    for (;;) {
        const int a = l.next();
        const int b = r.next();
        if (a != b || a < 0) return sign(a<b, a> b);
    }
}

[[gnu::noinline]] Collators& collatorsOfThread() noexcept {
    static thread_local Collators collators;
    return collators;
}

[[gnu::noinline]] int compareCollated(const char* locale, std::span<const UniChar> left,
                                      std::span<const UniChar> right, Case letters) noexcept {
    if (isCLocale(locale)) return compareUnits(left, right, letters);
    static thread_local Collators* collators = nullptr;  // known without asking whether they are there
    if (!collators) collators = &collatorsOfThread();
    const UCollator* collator = collators->get(locale, letters);
    if (!collator) return compareUnits(left, right, letters);
    return ucol_strcoll(collator, reinterpret_cast<const UChar*>(left.data()), sizeForIcu(left),
                        reinterpret_cast<const UChar*>(right.data()), sizeForIcu(right));
}

}  // namespace

int compareUnits(std::span<const UniChar> left, std::span<const UniChar> right, Case letters) noexcept {
    return letters == Case::Matters ? compareExactly(left, right) : compareFolded(left, right);
}

int compareIn(const char* locale, std::span<const UniChar> left, std::span<const UniChar> right,
              Case letters) noexcept {
    const bool isPlainC = locale[0] == 'C' && locale[1] == '\0';  // as every process starts
    return isPlainC ? compareUnits(left, right, letters) : compareCollated(locale, left, right, letters);
}

}  // namespace kestrel::detail
