// tools/kestrel/Text.h - between the library's text, UTF-8 and numbers of the command line.
#pragma once

#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSUUID.h>

#include <charconv>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::tools {

std::string utf8(const KSString& string);
KSString fromUTF8(std::string_view text);
/// Without characters that would steer a terminal.
std::string printable(std::string_view text);
/// Printable, between double quotes, and cut where it is long: a piece of input in a message.
std::string inQuotes(std::string_view text);
/// The bytes of the path that a URL names, for the system's calls; empty for a URL that is no file.
std::string filePath(const KSURL& url);

std::string text(const KSUUID& identifier);
/// Ten significant digits, as scene documents hold them.
std::string text(double number);
/// Blank-separated.
std::string text(std::span<const double> numbers);

/// A number that is all of text, in any locale's process; nothing when it is none or out of range.
template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}
/// Blank-separated numbers; nothing when a piece is none.
std::optional<std::vector<double>> parseNumbers(std::string_view text);

}  // namespace kestrel::tools
