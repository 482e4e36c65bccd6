#include "Options.h"

#include <map>
#include <string_view>

#include "../Text.h"

namespace kestrel::tools {
namespace {

const std::map<std::string, KSBitDepth::Type> depthNames = {{"8", KSBitDepth::INTEGER_8},
                                                            {"16", KSBitDepth::INTEGER_16},
                                                            {"half", KSBitDepth::HALF},
                                                            {"float", KSBitDepth::FLOAT}};

constexpr unsigned int largestSide = 65536;

}  // namespace

std::optional<Window> parseSize(const std::string& text) {
    const std::size_t mark = text.find('x');
    if (mark == std::string::npos) return std::nullopt;
    const auto width = parseNumber<unsigned int>(std::string_view(text).substr(0, mark));
    const auto height = parseNumber<unsigned int>(std::string_view(text).substr(mark + 1));
    if (!width || !height || *width < 1 || *height < 1 || *width > largestSide || *height > largestSide)
        return std::nullopt;
    return Window{0, 0, *width, *height};
}

std::optional<Window> parseWindow(const std::string& text) {
    const std::size_t first = text.find(',');
    const std::size_t second = text.find(',', first + 1);
    if (first == std::string::npos || second == std::string::npos) return std::nullopt;
    const auto x = parseNumber<int>(std::string_view(text).substr(0, first));
    const auto y = parseNumber<int>(std::string_view(text).substr(first + 1, second - first - 1));
    auto window = parseSize(text.substr(second + 1));
    if (!x || !y || !window) return std::nullopt;
    window->x = *x;
    window->y = *y;
    return window;
}

std::optional<Window> parseFrames(const std::string& text) {
    const std::size_t mark = text.find('-');
    const auto first = parseNumber<int>(std::string_view(text).substr(0, mark));
    const auto last =
        mark == std::string::npos ? first : parseNumber<int>(std::string_view(text).substr(mark + 1));
    if (!first || !last || *last < *first) return std::nullopt;
    return Window{*first, *last, 0, 0};
}

CLI::Option* addDepth(CLI::App* app, std::optional<KSBitDepth::Type>& target, const std::string& otherwise) {
    return app
        ->add_option_function<std::string>(
            "--depth", [&target](const std::string& name) { target = depthNames.at(name); },
            "8, 16, half or float; otherwise " + otherwise)
        ->check(CLI::IsMember(depthNames));
}

}  // namespace kestrel::tools
