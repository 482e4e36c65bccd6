// The encodings that are not built in, by ICU's converters.
#include <kestrel/platform/detail/TextEncoding.h>

#include <kestrel/platform/detail/StringObject.h>

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace kestrel::detail {

namespace {

struct EncodingRow {
    CFStringEncoding encoding;
    const char* name;
};

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

/// A converter that stops at the first thing it cannot convert; null for an unknown name.
Converter openConverter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(name && *name ? ucnv_open(name, &status) : nullptr);
    if (U_FAILURE(status) || !converter) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(converter.get(), false);
    return converter;
}

// Names as registered; the numbers are those that the platform's callers store.
constexpr auto encodings = std::to_array<EncodingRow>({
    {kCFStringEncodingMacRoman, "macintosh"},
    {kCFStringEncodingUTF16, "UTF-16"},
    {kCFStringEncodingISOLatin1, "ISO-8859-1"},
    {0x0202, "ISO-8859-2"},
    {0x0203, "ISO-8859-3"},
    {0x0204, "ISO-8859-4"},
    {0x0205, "ISO-8859-5"},
    {0x0206, "ISO-8859-6"},
    {0x0207, "ISO-8859-7"},
    {0x0208, "ISO-8859-8"},
    {0x0209, "ISO-8859-9"},
    {0x020A, "ISO-8859-10"},
    {0x020D, "ISO-8859-13"},
    {0x020E, "ISO-8859-14"},
    {0x020F, "ISO-8859-15"},
    {0x0400, "IBM437"},
    {0x0410, "IBM850"},
    {0x0411, "IBM852"},
    {0x0413, "IBM855"},
    {0x0419, "IBM866"},
    {kCFStringEncodingWindowsLatin1, "windows-1252"},
    {0x0501, "windows-1250"},
    {0x0502, "windows-1251"},
    {0x0503, "windows-1253"},
    {0x0504, "windows-1254"},
    {0x0505, "windows-1255"},
    {0x0506, "windows-1256"},
    {0x0507, "windows-1257"},
    {0x0508, "windows-1258"},
    {kCFStringEncodingASCII, "US-ASCII"},
    {0x0631, "GBK"},
    {0x0632, "GB18030"},
    {0x0820, "ISO-2022-JP"},
    {0x0830, "ISO-2022-CN"},
    {0x0840, "ISO-2022-KR"},
    {0x0920, "EUC-JP"},
    {0x0930, "GB2312"},
    {0x0940, "EUC-KR"},
    {0x0A01, "Shift_JIS"},
    {0x0A02, "KOI8-R"},
    {0x0A03, "Big5"},
    {0x0A08, "KOI8-U"},
    {kCFStringEncodingUTF8, "UTF-8"},
    {kCFStringEncodingUTF16BE, "UTF-16BE"},
    {kCFStringEncodingUTF16LE, "UTF-16LE"},
    {kCFStringEncodingUTF32, "UTF-32"},
    {kCFStringEncodingUTF32BE, "UTF-32BE"},
    {kCFStringEncodingUTF32LE, "UTF-32LE"},
});

}  // namespace

const char* nameOfEncoding(CFStringEncoding encoding) noexcept {
    const auto row = std::ranges::find(encodings, encoding, &EncodingRow::encoding);
    return row == encodings.end() ? nullptr : row->name;
}

CFStringEncoding encodingOfName(const char* name) noexcept {
    for (const EncodingRow& row : encodings)
        if (ucnv_compareNames(row.name, name) == 0) return row.encoding;
    // An alias: its registered name may be in the table.
    UErrorCode status = U_ZERO_ERROR;
    const char* registered = ucnv_getStandardName(name, "IANA", &status);
    for (const EncodingRow& row : encodings) {
        if (!registered) break;
        UErrorCode rowStatus = U_ZERO_ERROR;
        const char* ofRow = ucnv_getStandardName(row.name, "IANA", &rowStatus);
        if (ofRow && ucnv_compareNames(ofRow, registered) == 0) return row.encoding;
    }
    return kCFStringEncodingInvalidId;
}

CFStringRef createStringNamed(const char* encodingName, std::span<const char> bytes) noexcept {
    const Converter converter = openConverter(encodingName);
    if (!converter) return nullptr;
    __CFString* string = __CFString::make(bytes.size());
    const char* source = bytes.data();
    UErrorCode status = string ? U_BUFFER_OVERFLOW_ERROR : U_MEMORY_ALLOCATION_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        const std::size_t room = bytes.size() + 16;
        UniChar* const start = string->reserve(room);
        if (!start) {
            status = U_MEMORY_ALLOCATION_ERROR;
            break;
        }
        auto* target = reinterpret_cast<UChar*>(start);
        ucnv_toUnicode(converter.get(), &target, target + room, &source, bytes.data() + bytes.size(), nullptr,
                       true, &status);
        string->grow(static_cast<std::size_t>(reinterpret_cast<UniChar*>(target) - start));
    }
    if (status == U_ZERO_ERROR && string && source == bytes.data() + bytes.size()) return string;
    CFRelease(string);
    return nullptr;
}

Encoded encodeNamed(const char* encodingName, std::span<const UniChar> units, std::uint8_t lossByte,
                    std::span<std::uint8_t> bytes) {
    Encoded result;
    const Converter converter = openConverter(encodingName);
    if (!converter) return result;
    std::vector<char> piece(1024);
    std::vector<std::int32_t> offsets(piece.size());
    const auto* const start = reinterpret_cast<const UChar*>(units.data());
    const UChar* const end = start + units.size();
    const UChar* source = start;
    for (;;) {
        // Each piece of output says at which unit every byte began, so that a full buffer ends between
        // characters.
        const UChar* const pieceStart = source;
        char* target = piece.data();
        UErrorCode status = U_ZERO_ERROR;
        const UChar* const pieceEnd = source + std::min<std::ptrdiff_t>(end - source, 64);
        ucnv_fromUnicode(converter.get(), &target, target + piece.size(), &source, pieceEnd, offsets.data(),
                         pieceEnd == end, &status);
        const auto written = static_cast<std::size_t>(target - piece.data());
        if (written <= bytes.size() - result.bytes) {
            std::copy_n(piece.data(), written, bytes.data() + result.bytes);
            result.bytes += written;
        } else {
            std::size_t fits = bytes.size() - result.bytes;
            while (fits > 0 && offsets[fits] == offsets[fits - 1]) --fits;
            std::copy_n(piece.data(), fits, bytes.data() + result.bytes);
            result.bytes += fits;
            // The offset is -1 for a pair whose first half was the last unit of the piece before.
            result.units = static_cast<std::size_t>(pieceStart - start + offsets[fits]);
            return result;
        }
        result.units = static_cast<std::size_t>(source - start);
        if (U_FAILURE(status)) {
            UChar invalid[8];
            std::int8_t invalidCount = 8;
            UErrorCode ignored = U_ZERO_ERROR;
            ucnv_getInvalidUChars(converter.get(), invalid, &invalidCount, &ignored);
            if (lossByte == 0 || result.bytes == bytes.size()) {
                result.units -= static_cast<std::size_t>(invalidCount);
                return result;
            }
            bytes[result.bytes++] = lossByte;
        }
        if (source == end) return result;
    }
}

}  // namespace kestrel::detail
