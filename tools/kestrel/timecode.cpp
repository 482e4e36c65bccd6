// kestrel timecode: frames to text and back, sums of both, and the frames around a drop point.
#include <kestrel/foundation/KSString.h>
#include <kestrel/time/KSTimecode.h>
#include <kestrel/time/KSTimecodeMode.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Commands.h"
#include "InputLines.h"
#include "Text.h"

namespace kestrel::tools {

namespace {

struct Options {
    std::string mode = KSTimecodeMode::Nm30DF;
    int fps = 0, drop = 0, interval = 60, keep = 600;
    bool list = false, packed = false;
    std::string print = "other", around;
    int rows = 3;
    std::vector<std::string> words;
};

KSTimecodeMode modeOf(const Options& options) {
    if (options.fps != 0) return {"", options.fps, options.drop, options.interval, options.keep};
    const auto* mode = KSTimecodeMode::refTimecodeMode(options.mode.c_str());
    if (utf8(mode->getName()) == options.mode) return *mode;
    std::string names;
    for (const auto* known : KSTimecodeMode::getTimecodeModes())
        names += (names.empty() ? "" : ", ") + inQuotes(utf8(known->getName()));
    failInput(0, "no mode is called " + inQuotes(options.mode) + "; there are " + names);
}

std::string formatFrame(int frame, const KSTimecodeMode& mode) {
    char text[KSTimecode::maxTextSize];
    return {text, KSTimecode::getTimecode(frame, mode, text, sizeof text)};
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Reads values and sums of them, and prints each result as a line.
class Converter {
public:
    Converter(const Options& options, const KSTimecodeMode& mode, OutputLines& output)
        : m_mode(mode),
          m_output(output),
          m_isPacked(options.packed),
          m_printFrames(options.print != "text"),
          m_printTexts(options.print != "frames") {}

    /// text holds values with blanks between, and "+" or "-" with blanks around for sums.
    void convert(std::string_view text, std::size_t line) {
        std::string_view word = nextWord(text);
        while (!word.empty()) {
            Value value = readValue(word, line);
            word = nextWord(text);
            while (word == "+" || word == "-") {
                const std::string_view operand = nextWord(text);
                if (operand.empty()) failInput(line, "expected a value behind " + inQuotes(word));
                const auto other = readValue(operand, line).frame;
                value = {value.frame + (word == "+" ? other : -other), Kind::sum};
                word = nextWord(text);
            }
            print(value, line);
        }
    }

    std::int64_t readFrame(std::string_view text) const { return readValue(text, 0).frame; }

private:
    enum class Kind { frame, text, sum };
    struct Value {
        std::int64_t frame;
        Kind kind;
    };

    static std::string_view nextWord(std::string_view& text) {
        const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
        const char* const start = std::find_if_not(text.begin(), text.end(), isBlank);
        const char* const end = std::find_if(start, text.end(), isBlank);
        text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
        return {start, end};
    }

    Value readValue(std::string_view word, std::size_t line) const {
        const std::string_view body = word.substr(word.starts_with('-') ? 1 : 0);
        std::size_t digits = 0, separators = 0;
        for (const char c : body) {
            digits += isDigit(c);
            separators +=
                std::memchr(KSTimecode::separators, c, sizeof KSTimecode::separators - 1) != nullptr;
        }
        if (digits == 0 || digits + separators != body.size() || separators > 3)
            failInput(line, inQuotes(word) + " is neither a frame number nor a timecode");
        return separators == 0 && !m_isPacked ? readNumber(word, line) : readText(word, line);
    }

    static Value readNumber(std::string_view word, std::size_t line) {
        int frame = 0;
        const auto error = std::from_chars(word.begin(), word.end(), frame).ec;
        if (error != std::errc()) failInput(line, inQuotes(word) + " is beyond the range of frames");
        return {frame, Kind::frame};
    }

    Value readText(std::string_view word, std::size_t line) const {
        const int frame = KSTimecode::getTimeIndex(word.data(), word.size(), m_mode);
        using Limits = std::numeric_limits<int>;
        const bool isLimit = frame == Limits::max() || frame == Limits::min();
        if (isLimit && formatFrame(frame, m_mode) != word)
            failInput(line, inQuotes(word) + " is beyond the range of frames");
        return {frame, Kind::text};
    }

    void print(const Value& value, std::size_t line) {
        if (!std::in_range<int>(value.frame))
            failInput(line, std::to_string(value.frame) + " is beyond the range of frames");
        const int frame = static_cast<int>(value.frame);
        const bool asFrame = m_printFrames && (!m_printTexts || value.kind == Kind::text);
        char text[KSTimecode::maxTextSize];
        const std::size_t length =
            asFrame ? static_cast<std::size_t>(std::to_chars(text, std::end(text), frame).ptr - text)
                    : KSTimecode::getTimecode(frame, m_mode, text, sizeof text);
        m_output.add({text, length});
    }

    const KSTimecodeMode& m_mode;
    OutputLines& m_output;
    bool m_isPacked, m_printFrames, m_printTexts;
};

void printModes() {
    std::printf("%-12s %4s %5s %9s %5s\n", "mode", "fps", "drop", "interval", "keep");
    for (const auto* mode : KSTimecodeMode::getTimecodeModes()) {
        int drop, interval, keep;
        mode->getDropInfo(&drop, &interval, &keep);
        std::printf("%-12s %4d %5d %9d %5d\n", utf8(mode->getName()).c_str(), mode->getFps(), drop, interval,
                    keep);
    }
}

void printAround(std::int64_t middle, int rows, const KSTimecodeMode& mode) {
    using Limits = std::numeric_limits<int>;
    const auto first = std::max<std::int64_t>(middle - rows, Limits::min());
    const auto last = std::min<std::int64_t>(middle + rows, Limits::max());
    std::printf("%11s  %-14s  %7s\n", "frame", "timecode", "skipped");
    for (auto frame = first; frame <= last; ++frame) {
        const int index = static_cast<int>(frame);
        // The text of a negative frame is that of its absolute value behind a sign; so is its count.
        const int size = index < 0 ? -std::max(index, -Limits::max()) : index;
        const std::int64_t dropped = KSTimecode::getDroppedFrames(size, mode);
        std::printf("%11d  %-14s  %7lld\n", index, formatFrame(index, mode).c_str(),
                    static_cast<long long>(index < 0 ? -dropped : dropped));
    }
}

void run(const Options& options) {
    if (options.list) return printModes();
    OutputLines output("kestrel timecode");
    // The words of the command line are one line, so that sums need no quotes.
    std::string words;
    for (const auto& word : options.words) words += word + ' ';
    try {
        const KSTimecodeMode mode = modeOf(options);
        Converter converter(options, mode, output);
        if (!options.around.empty()) {
            printAround(converter.readFrame(options.around), options.rows, mode);
        } else {
            const std::vector<std::string> lines(words.empty() ? 0 : 1, words);
            runOnInput(lines, output, [&](auto text, auto line) { converter.convert(text, line); });
        }
    } catch (const BadInput& bad) {
        output.end(bad.message);
    }
}

}  // namespace

void addTimecode(CLI::App& app) {
    CLI::App* command = app.add_subcommand("timecode", "Convert frame numbers to timecode text and back");
    auto options = std::make_shared<Options>();
    CLI::Option* values =
        command->add_option("values", options->words,
                            "frame numbers, timecodes, and sums of them with + and - between blanks\n"
                            "(none: read them from standard input, any number a line)");
    command->add_option("--mode", options->mode, "a registered mode")->capture_default_str();
    CLI::Option* fps = command->add_option("--fps", options->fps, "a mode of your own: frames a second")
                           ->check(CLI::Range(1, std::numeric_limits<int>::max(), "POSITIVE"))
                           ->excludes("--mode");
    command->add_option("--drop", options->drop, "frame numbers skipped at each drop point")->needs(fps);
    command->add_option("--interval", options->interval, "seconds between drop points")
        ->capture_default_str()
        ->needs(fps);
    command->add_option("--keep", options->keep, "seconds between drop points that skip nothing")
        ->capture_default_str()
        ->needs(fps);
    command->add_option("--print", options->print, "what to print: the other form, text, or frames")
        ->check(CLI::IsMember({"other", "text", "frames"}))
        ->capture_default_str();
    command->add_flag("--packed", options->packed,
                      "bare digits are a timecode: 1234 is 12 seconds 34 frames");
    command->add_option("--around", options->around, "print a table of the frames around this one")
        ->excludes(values);
    command->add_option("--rows", options->rows, "rows before and after it")
        ->check(CLI::Range(0, 1000000))
        ->capture_default_str();
    command->add_flag("--list", options->list, "print the registered modes")->excludes(values);
    command->footer(
        "Examples:\n"
        "  kestrel timecode 1800                        00:01:00;02\n"
        "  kestrel timecode '01:00:00;00 + 250'         01:00:08;10\n"
        "  kestrel timecode --fps 60 --drop 4 3600      00:01:00;04\n"
        "  kestrel timecode --around 1800\n"
        "  seq 0 100 | kestrel timecode --mode '25 FPS'");
    command->callback([options] { run(*options); });
}

}  // namespace kestrel::tools
