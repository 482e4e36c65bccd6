#include <kestrel/platform/detail/XmlEncoding.h>

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace kestrel::detail {
namespace {

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter openConverter(const std::string& name) {
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(name.c_str(), &error), &ucnv_close);
    if (U_FAILURE(error)) return {nullptr, &ucnv_close};
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    return converter;
}

// How documents begin that are no plain ASCII at their start. Longer marks stand before their prefixes.
struct Beginning {
    std::string_view bytes;
    const char* encoding;
};
using namespace std::string_view_literals;
constexpr auto beginnings = std::to_array<Beginning>({
    {"\xEF\xBB\xBF"sv, "UTF-8"},
    {"\xFF\xFE\0\0"sv, "UTF-32LE"},
    {"\0\0\xFE\xFF"sv, "UTF-32BE"},
    {"\xFF\xFE"sv, "UTF-16LE"},
    {"\xFE\xFF"sv, "UTF-16BE"},
    {"<\0\0\0"sv, "UTF-32LE"},
    {"\0\0\0<"sv, "UTF-32BE"},
    {"<\0"sv, "UTF-16LE"},
    {"\0<"sv, "UTF-16BE"},
});
constexpr std::string_view ebcdicDeclaration = "\x4C\x6F\xA7\x94";  // <?xm

// The encoding that an XML declaration names; empty where there is none. What is wrong with the
// declaration is for the tokenizer to say.
std::string declaredEncoding(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    if (!text.starts_with("<?xml")) return {};
    text = text.substr(0, text.find("?>"));
    const auto skipBlanks = [&] {
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    };
    const std::size_t name = text.find("encoding");
    if (name == std::string_view::npos) return {};
    text.remove_prefix(name + 8);
    skipBlanks();
    if (!text.starts_with('=')) return {};
    text.remove_prefix(1);
    skipBlanks();
    if (text.empty() || (text[0] != '"' && text[0] != '\'')) return {};
    const std::size_t end = text.find(text[0], 1);
    if (end == std::string_view::npos) return {};
    return std::string(text.substr(1, std::min<std::size_t>(end - 1, UCNV_MAX_CONVERTER_NAME_LENGTH)));
}

std::string declaredEbcdic(std::string_view bytes) {
    UErrorCode error = U_ZERO_ERROR;
    std::array<char, 256> text{};
    const Converter converter = openConverter("ibm-37");
    if (!converter) return {};
    std::array<UChar, 256> units{};
    const auto size = static_cast<std::int32_t>(std::min(bytes.size(), units.size() - 1));
    const auto count = ucnv_toUChars(converter.get(), units.data(), 256, bytes.data(), size, &error);
    std::transform(units.begin(), units.begin() + std::clamp(count, 0, 255), text.begin(),
                   [](UChar unit) { return unit < 0x80 ? static_cast<char>(unit) : '?'; });
    return declaredEncoding(text.data());
}

// Whether a converter's ASCII is not the bytes of ASCII, so that no declaration in ASCII can name it.
bool isWide(const UConverter* converter) {
    return ucnv_getMinCharSize(converter) > 1 || ucnv_getType(converter) == UCNV_UTF16 ||
           ucnv_getType(converter) == UCNV_UTF32;
}

}  // namespace

XmlEncodedText::XmlEncodedText(std::string_view bytes) : m_bytes(bytes) {
    bool isDeclared = false;
    for (const Beginning& beginning : beginnings)
        if (m_encoding.empty() && bytes.starts_with(beginning.bytes)) m_encoding = beginning.encoding;
    if (m_encoding.empty()) {
        m_encoding = bytes.starts_with(ebcdicDeclaration) ? declaredEbcdic(bytes) : declaredEncoding(bytes);
        isDeclared = !m_encoding.empty();
        if (!isDeclared) m_encoding = "UTF-8";
    }
    if (ucnv_compareNames(m_encoding.c_str(), "UTF-8") == 0) return;

    m_isConverted = true;
    const Converter converter = openConverter(m_encoding);
    if (!converter) {
        m_status = kCFXMLErrorUnknownEncoding;
        m_reason = "the encoding \"" + m_encoding + "\" is not known";
    } else if (isDeclared && isWide(converter.get())) {
        m_status = kCFXMLErrorEncodingConversionFailure;
        m_reason = "the document is not in \"" + m_encoding + "\", as it declares";
    } else {
        convert();
    }
}

void XmlEncodedText::convert() {
    const Converter converter = openConverter(m_encoding);
    std::vector<UChar> units(16384);
    std::vector<char> text(units.size() * 3);
    std::size_t carried = 0;  // a lead surrogate whose other half is still to come
    const char* source = m_bytes.data();
    const char* const end = source + m_bytes.size();
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        error = U_ZERO_ERROR;
        UChar* target = units.data() + carried;
        ucnv_toUnicode(converter.get(), &target, units.data() + units.size(), &source, end, nullptr, true,
                       &error);
        carried = error == U_BUFFER_OVERFLOW_ERROR && U16_IS_LEAD(target[-1]) ? 1 : 0;
        const auto count = static_cast<std::int32_t>(target - units.data() - static_cast<long>(carried));
        std::int32_t size = 0;
        UErrorCode written = U_ZERO_ERROR;
        u_strToUTF8(text.data(), static_cast<std::int32_t>(text.size()), &size, units.data(), count,
                    &written);
        if (U_FAILURE(written))
            error = written;
        else
            m_converted.append(text.data(), static_cast<std::size_t>(size));
        if (carried) units[0] = target[-1];
    }
    if (U_FAILURE(error)) {
        m_status = kCFXMLErrorEncodingConversionFailure;
        m_reason = "bytes that are no " + m_encoding;
    }
}

}  // namespace kestrel::detail
