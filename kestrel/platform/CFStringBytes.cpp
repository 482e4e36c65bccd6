// Text objects from bytes and back. The encodings of every day are built in; ICU knows the others.
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/detail/AsciiRun.h>
#include <kestrel/platform/detail/MacRoman.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/TextEncoding.h>
#include <kestrel/platform/detail/Utf8.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <vector>

using namespace kestrel::detail;

namespace {

constexpr bool isLittleEndian = std::endian::native == std::endian::little;

/// UTF-16 and UTF-32 without a named order are in the machine's.
CFStringEncoding withOrder(CFStringEncoding encoding) {
    if (encoding == kCFStringEncodingUTF16)
        return isLittleEndian ? kCFStringEncodingUTF16LE : kCFStringEncodingUTF16BE;
    if (encoding == kCFStringEncodingUTF32)
        return isLittleEndian ? kCFStringEncodingUTF32LE : kCFStringEncodingUTF32BE;
    return encoding;
}

bool isSwapped(CFStringEncoding encoding) {
    return encoding == (isLittleEndian ? kCFStringEncodingUTF16BE : kCFStringEncodingUTF16LE);
}

UniChar swapped(UniChar unit) { return static_cast<UniChar>(unit << 8 | unit >> 8); }

/// A byte-order mark, and what it says about text that claims to be in `claimed`.
struct Mark {
    CFStringEncoding claimed;
    CFStringEncoding actual;
    std::size_t size;
    std::uint8_t bytes[4];
};
constexpr Mark marks[] = {
    {kCFStringEncodingUTF8, kCFStringEncodingUTF8, 3, {0xEF, 0xBB, 0xBF}},
    {kCFStringEncodingUTF32, kCFStringEncodingUTF32LE, 4, {0xFF, 0xFE, 0, 0}},
    {kCFStringEncodingUTF32, kCFStringEncodingUTF32BE, 4, {0, 0, 0xFE, 0xFF}},
    {kCFStringEncodingUTF16, kCFStringEncodingUTF16LE, 2, {0xFF, 0xFE}},
    {kCFStringEncodingUTF16, kCFStringEncodingUTF16BE, 2, {0xFE, 0xFF}},
};

/// A string whose units `decode(target)` writes, at most `room` of them; decode returns how many, or
/// invalidText.
template <typename Decode>
CFStringRef createDecoded(std::size_t room, Decode decode) {
    __CFString* string = __CFString::make(room);
    UniChar* target = string ? string->reserve(room) : nullptr;
    const std::size_t units = target ? decode(target) : invalidText;
    if (units == invalidText) {
        CFRelease(string);
        return nullptr;
    }
    string->grow(units);
    return string;
}

CFStringRef createFromBytes(const std::uint8_t* bytes, std::size_t count, CFStringEncoding encoding) {
    const std::span text(reinterpret_cast<const char*>(bytes), count);
    switch (encoding) {
        case kCFStringEncodingMacRoman:
            return createDecoded(count, [&](UniChar* units) {
                utf16FromMacRoman(bytes, count, units);
                return count;
            });
        case kCFStringEncodingASCII:
            return createDecoded(count, [&](UniChar* units) {
                return widenAscii(bytes, count, units) == count ? count : invalidText;
            });
        case kCFStringEncodingUTF8:
            return createDecoded(count, [&](UniChar* units) { return utf16FromUtf8(text, units); });
        case kCFStringEncodingUTF16LE:
        case kCFStringEncodingUTF16BE:
            if (count % sizeof(UniChar) != 0) return nullptr;
            return createDecoded(count / sizeof(UniChar), [&](UniChar* units) {
                const std::size_t length = count / sizeof(UniChar);
                if (count) std::memcpy(units, bytes, count);
                if (isSwapped(encoding)) std::transform(units, units + length, units, swapped);
                return length;
            });
        default:
            return createStringNamed(nameOfEncoding(encoding), text);
    }
}

/// UTF-8 while whole characters fit: in pieces that fit for certain, then one character at a time.
Encoded encodeUtf8(std::span<const UniChar> units, std::span<std::uint8_t> bytes) {
    const auto isHigh = [](UniChar unit) { return (unit & 0xFC00) == 0xD800; };
    const auto isLow = [](UniChar unit) { return (unit & 0xFC00) == 0xDC00; };
    Encoded result;
    while (result.units < units.size()) {
        const auto rest = units.subspan(result.units);
        const std::size_t room = bytes.size() - result.bytes;
        char* const target = reinterpret_cast<char*>(bytes.data()) + result.bytes;
        std::size_t count = std::min(rest.size(), room / maximumUtf8PerUnit);
        if (count > 0 && count < rest.size() && isHigh(rest[count - 1])) --count;
        if (count > 0) {
            result.bytes += utf8FromUtf16(rest.first(count), target);
        } else {
            count = rest.size() > 1 && isHigh(rest[0]) && isLow(rest[1]) ? 2 : 1;
            char character[2 * maximumUtf8PerUnit];
            const std::size_t size = utf8FromUtf16(rest.first(count), character);
            if (size > room) break;
            std::memcpy(target, character, size);
            result.bytes += size;
        }
        result.units += count;
    }
    return result;
}

/// True when units begin with a surrogate pair, which is one character.
bool isPair(std::span<const UniChar> units) {
    return units.size() > 1 && (units[0] & 0xFC00) == 0xD800 && (units[1] & 0xFC00) == 0xDC00;
}

/// The encodings of one byte a unit, whose run(units, count, bytes) says how many can be held.
template <typename Run>
Encoded encodeBytewise(std::span<const UniChar> units, std::uint8_t lossByte, std::span<std::uint8_t> bytes,
                       Run run) {
    Encoded result;
    for (;;) {
        const std::size_t count = std::min(units.size() - result.units, bytes.size() - result.bytes);
        const std::size_t held = run(units.data() + result.units, count, bytes.data() + result.bytes);
        result.units += held;
        result.bytes += held;
        if (lossByte == 0 || held == count) return result;
        bytes[result.bytes++] = lossByte;
        result.units += isPair(units.subspan(result.units)) ? 2 : 1;
    }
}

Encoded encodeUtf16(std::span<const UniChar> units, bool swap, std::span<std::uint8_t> bytes) {
    const std::size_t count = std::min(units.size(), bytes.size() / sizeof(UniChar));
    for (std::size_t i = 0; i < count; ++i) {
        const UniChar unit = swap ? swapped(units[i]) : units[i];
        std::memcpy(bytes.data() + i * sizeof unit, &unit, sizeof unit);
    }
    return {count, count * sizeof(UniChar)};
}

Encoded encode(std::span<const UniChar> units, CFStringEncoding encoding, std::uint8_t lossByte,
               std::span<std::uint8_t> bytes) {
    switch (encoding) {
        case kCFStringEncodingMacRoman:
            return encodeBytewise(units, lossByte, bytes, macRomanFromUtf16);
        case kCFStringEncodingASCII:
            return encodeBytewise(units, lossByte, bytes, narrowAscii);
        case kCFStringEncodingUTF8:
            return encodeUtf8(units, bytes);
        case kCFStringEncodingUTF16LE:
        case kCFStringEncodingUTF16BE:
            return encodeUtf16(units, isSwapped(encoding), bytes);
        default:
            return encodeNamed(nameOfEncoding(encoding), units, lossByte, bytes);
    }
}

}  // namespace

CFStringEncoding CFStringGetSystemEncoding() { return kCFStringEncodingUTF8; }

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name) {
    return name ? encodingOfName(utf8Of(name->getUnits()).c_str()) : kCFStringEncodingInvalidId;
}

CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding) {
    const char* name = nameOfEncoding(encoding);
    return name ? __CFStringMakeConstantString(name) : nullptr;
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding) { return nameOfEncoding(encoding) != nullptr; }

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    return text ? createFromBytes(reinterpret_cast<const std::uint8_t*>(text), std::strlen(text),
                                  withOrder(encoding))
                : nullptr;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternal) {
    if (count < 0 || (!bytes && count > 0)) return nullptr;
    auto size = static_cast<std::size_t>(count);
    CFStringEncoding actual = withOrder(encoding);
    if (isExternal) {
        for (const Mark& mark : marks) {
            if (mark.claimed != encoding || size < mark.size ||
                std::memcmp(bytes, mark.bytes, mark.size) != 0)
                continue;
            actual = mark.actual;
            bytes += mark.size;
            size -= mark.size;
            break;
        }
    }
    return createFromBytes(bytes, size, actual);
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
    if (!buffer || bufferSize <= 0) return false;
    const auto units = unitsOf(string);
    const std::span bytes(reinterpret_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(bufferSize) - 1);
    const Encoded result = encode(units, withOrder(encoding), 0, bytes);
    const bool isWhole = result.units == units.size();
    buffer[isWhole ? result.bytes : 0] = '\0';
    return isWhole;
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternal, UInt8* buffer, CFIndex maxBytes, CFIndex* usedBytes) {
    const auto text = unitsOf(string);
    const ClampedRange part(range, text.size());
    const auto units = text.subspan(part.position, part.count);
    const CFStringEncoding ordered = withOrder(encoding);
    std::vector<std::uint8_t> measured;  // somewhere to write what is only measured
    if (!buffer)
        measured.resize(static_cast<std::size_t>(
                            CFStringGetMaximumSizeForEncoding(static_cast<CFIndex>(units.size()), encoding)) +
                        4);
    std::span<std::uint8_t> bytes(measured);
    if (buffer) bytes = {buffer, maxBytes > 0 ? static_cast<std::size_t>(maxBytes) : 0};

    std::size_t markSize = 0;
    for (const Mark& mark : marks) {
        if (!isExternal || mark.claimed != encoding || mark.actual != ordered ||
            encoding == kCFStringEncodingUTF8)
            continue;
        if (bytes.size() < mark.size) {
            if (usedBytes) *usedBytes = 0;
            return 0;
        }
        markSize = mark.size;
        std::memcpy(bytes.data(), mark.bytes, markSize);
    }
    const Encoded result = encode(units, ordered, lossByte, bytes.subspan(markSize));
    if (usedBytes) *usedBytes = static_cast<CFIndex>(markSize + result.bytes);
    return static_cast<CFIndex>(result.units);
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    if (length < 0 || length > std::numeric_limits<CFIndex>::max() / 16) return kCFNotFound;
    switch (withOrder(encoding)) {
        case kCFStringEncodingMacRoman:
        case kCFStringEncodingASCII:
            return length;
        case kCFStringEncodingUTF16LE:
        case kCFStringEncodingUTF16BE:
            return length * 2;
        case kCFStringEncodingUTF8:
            return length * static_cast<CFIndex>(maximumUtf8PerUnit);
        default:
            return length * 8 + 16;  // shifts of stateful encodings included
    }
}
