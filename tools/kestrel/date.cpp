// kestrel date: the save forms of dates, converted into each other.
#include <kestrel/foundation/KSString.h>
#include <kestrel/time/KSDate.h>

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.h"
#include "InputLines.h"
#include "Text.h"

namespace kestrel::tools {

namespace {

struct Options {
    std::string print = "all";
    bool now = false;
    std::vector<std::string> values;
};

/// Sets date if text is a save value, in digits or in hexadecimal behind 0x.
bool readSaveValue(std::string_view text, KSDate& date) {
    const bool isHex = text.starts_with("0x");
    if (isHex) text.remove_prefix(2);
    unsigned int value = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), value, isHex ? 16 : 10);
    if (text.empty() || error != std::errc() || end != text.end()) return false;
    date.setFromSaveVal(value);
    return true;
}

KSDate readDate(const std::string& text, std::size_t line) {
    KSDate date;
    if (!readSaveValue(text, date) && !date.loadString(text.c_str()))
        failInput(line, inQuotes(text) + " is no date like 07-Mar-2005, 07-03-2005 or 0x07036900");
    if (date == KSDate()) failInput(line, inQuotes(text) + " is outside 14-Dec-1901 to 19-Jan-2038");
    return date;
}

std::string format(const KSDate& date, const std::string& form) {
    KSString saved;
    date.saveString(&saved);
    const std::string text = utf8(saved);
    char value[16];
    std::snprintf(value, sizeof value, "0x%08x", date.getSaveVal());
    const std::string seconds = std::to_string(date.getSeconds());
    if (form == "text") return text;
    if (form == "value") return value;
    if (form == "seconds") return seconds;
    return text + ' ' + value + ' ' + seconds;
}

void printNow() {
    KSString text;
    for (const bool longDate : {false, true})
        for (const bool withSeconds : {false, true})
            if (KSDate::getDateAndTime(&text, longDate, withSeconds)) std::puts(utf8(text).c_str());
    if (KSDate::getDate(&text)) std::puts(utf8(text).c_str());
    for (const bool withSeconds : {false, true})
        if (KSDate::getDateTimeForFile(&text, withSeconds)) std::puts(utf8(text).c_str());
}

void run(const Options& options) {
    if (options.now) return printNow();
    OutputLines output("kestrel date");
    runOnInput(options.values, output, [&](std::string_view text, std::size_t line) {
        if (!text.empty()) output.add(format(readDate(std::string(text), line), options.print));
    });
}

}  // namespace

void addDate(CLI::App& app) {
    CLI::App* command = app.add_subcommand("date", "Convert the save forms of dates into each other");
    auto options = std::make_shared<Options>();
    CLI::Option* values =
        command->add_option("values", options->values,
                            "save texts (07-Mar-2005, 07-03-2005) and save values (0x07036900, 117664000)\n"
                            "(none: read them from standard input, one a line)");
    command->add_option("--print", options->print, "what to print: text, value, seconds since 1970, or all")
        ->check(CLI::IsMember({"text", "value", "seconds", "all"}))
        ->capture_default_str();
    command->add_flag("--now", options->now, "print the present date and time in each of the library's forms")
        ->excludes(values);
    command->footer(
        "Examples:\n"
        "  kestrel date 07-Mar-2005                     07-Mar-2005 0x07036900 1110153600\n"
        "  kestrel date --print text 0x07036900         07-Mar-2005");
    command->callback([options] { run(*options); });
}

}  // namespace kestrel::tools
