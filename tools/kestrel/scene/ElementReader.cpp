#include "ElementReader.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "../Text.h"

namespace kestrel::tools::scene {
namespace {

std::string quoted(const KSString& value) {
    constexpr std::size_t longest = 40;
    const std::string text = printable(utf8(value));
    if (text.size() <= longest) return '"' + text + '"';
    std::size_t end = longest;
    while (end && (text[end] & 0xC0) == 0x80) --end;  // not inside a character
    return '"' + text.substr(0, end) + "...\"";
}

}  // namespace

void ElementReader::fault(const std::string& what) const { m_reader.fault(m_line, m_name + (": " + what)); }

bool ElementReader::get(unsigned token, const char* name, KSString& value) const {
    if (m_element.getAttributeAsString(token, &value)) return true;
    fault(std::string("attribute ") + name + " is missing");
    return false;
}

template <class Number>
void ElementReader::readNumber(unsigned token, const char* name, const char* kind, Number& value) const {
    KSString given;
    if (!get(token, name, given)) return;
    if (const auto parsed = parseNumber<Number>(utf8(given))) {
        value = *parsed;
    } else {
        fault(std::string(name) + " is " + quoted(given) + ", not " + kind);
    }
}

void ElementReader::read(unsigned token, const char* name, int& value) const {
    readNumber(token, name, "a whole number of 32 bits", value);
}
void ElementReader::read(unsigned token, const char* name, long long& value) const {
    readNumber(token, name, "a whole number", value);
}
void ElementReader::read(unsigned token, const char* name, double& value) const {
    readNumber(token, name, "a number", value);
}

void ElementReader::read(unsigned token, const char* name, KSUUID& value) const {
    KSString given;
    if (!get(token, name, given)) return;
    const std::unique_ptr<KSUUID> parsed(m_element.getAttributeAsUUID(token));
    if (parsed && given.size() == 32) {
        value = *parsed;
    } else {
        fault(std::string(name) + " is " + quoted(given) + ", not 32 hexadecimal digits");
    }
}

void ElementReader::read(unsigned token, const char* name, KSString& value) const { get(token, name, value); }

void ElementReader::readValue(std::vector<double>& values) const {
    KSString given;
    m_element.getAsString(&given);
    if (auto parsed = parseNumbers(utf8(given))) {
        values = std::move(*parsed);
    } else {
        fault(quoted(given) + " is no list of numbers");
    }
}

void ElementReader::readValue(std::span<double> values) const {
    KSString given;
    m_element.getAsString(&given);
    const auto list = parseNumbers(utf8(given));
    if (!list || list->size() != values.size()) {
        fault(quoted(given) + " instead of " + std::to_string(values.size()) + " numbers");
    } else {
        std::copy(list->begin(), list->end(), values.begin());
    }
}

}  // namespace kestrel::tools::scene
