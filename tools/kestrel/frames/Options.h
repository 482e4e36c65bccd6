// tools/kestrel/frames/Options.h - options that several subcommands take.
#pragma once

#include <CLI/CLI.hpp>

#include <kestrel/imaging/KSBitDepth.h>

#include <optional>
#include <string>

#include "Convert.h"

namespace kestrel::tools {

/// "WxH", both from 1 to 65536.
std::optional<Window> parseSize(const std::string& text);
/// "X,Y,WxH".
std::optional<Window> parseWindow(const std::string& text);
/// "A-B" or "A", as x and y.
std::optional<Window> parseFrames(const std::string& text);

/// An option whose text is read by parse into target; forms says what it takes.
template <class Value, class Parse>
void addParsed(CLI::App* app, const char* name, std::optional<Value>& target, Parse parse,
               const std::string& help, const std::string& forms) {
    app->add_option_function<std::string>(
        name,
        [&target, parse, name, forms](const std::string& text) {
            target = parse(text);
            if (!target) throw CLI::ValidationError(name, "'" + text + "' is not " + forms);
        },
        help);
}

/// --depth; otherwise says what is taken without it.
CLI::Option* addDepth(CLI::App* app, std::optional<KSBitDepth::Type>& target, const std::string& otherwise);

}  // namespace kestrel::tools
