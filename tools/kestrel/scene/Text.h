// tools/kestrel/scene/Text.h - between the library's text and UTF-8, and numbers as text.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSUUID.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::tools::scene {

std::string utf8(const KSString& text);
KSString fromUTF8(std::string_view text);
/// Without characters that would steer a terminal.
std::string printable(std::string_view text);

std::string text(const KSUUID& identifier);
/// Ten significant digits, as scene documents hold them.
std::string text(double number);
/// Blank-separated.
std::string text(std::span<const double> numbers);

/// A whole text that is one number; nullopt for anything else. No locale, no blanks around it.
template <class Number>
std::optional<Number> number(std::string_view text);
/// Blank-separated numbers; nullopt when a piece is none.
std::optional<std::vector<double>> numbers(std::string_view text);

}  // namespace kestrel::tools::scene
