// kestrel scene: project documents made, checked, printed, rewritten and fingerprinted.
//
// Exit status  0 all well, or nothing but warnings; 1 a document has faults or could not be written; 2 a
//              file could not be read, or standard output failed. Wrong usage gives the statuses of the
//              command line itself.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Terminal.h"
#include "Text.h"
#include "scene/DocumentFile.h"
#include "scene/Output.h"
#include "scene/Samples.h"
#include "scene/SceneChecks.h"
#include "scene/ScenePrinter.h"
#include "scene/SceneReader.h"
#include "scene/SceneWriter.h"
#include "scene/Stats.h"

namespace kestrel::tools {
namespace {

using namespace scene;

constexpr int faulty = 1, unreadable = 2;

/// What all subcommands are told.
struct Options {
    std::vector<std::string> files;
    std::string in = "-", out = "-", color = "auto";
    std::uint64_t seed = 0, size = 0;
    bool hasSeed = false, force = false, strict = false, identifiers = false, stats = false;
};

std::string place(const std::string& file, long line) {
    return line > 0 ? file + ':' + std::to_string(line) + ": " : file + ": ";
}

void complain(const std::string& text) { std::fprintf(stderr, "kestrel: %s\n", text.c_str()); }

FaultSink toStandardError(const std::string& file) {
    return [file](long line, const std::string& what) {
        std::fprintf(stderr, "%s%s\n", place(file, line).c_str(), what.c_str());
    };
}

double sizeOf(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? static_cast<double>(status.st_size) : 0;
}

/// A reader, or null when the file cannot be read, which has been said then.
std::unique_ptr<SceneReader> openOrComplain(const std::string& file, SceneVisitor& visitor,
                                            FaultSink faults) {
    try {
        return SceneReader::open(file, visitor, std::move(faults));
    } catch (const std::runtime_error& error) {
        complain(place(file, 0) + error.what());
        return nullptr;
    }
}

// ---- check ----

int checkFile(const std::string& file, bool strict, Output& out) {
    std::vector<std::pair<long, std::string>> findings;
    bool hasFaults = false;
    const FaultSink fault = [&](long line, const std::string& what) {
        findings.emplace_back(line, what);
        hasFaults = true;
    };
    const FaultSink warning = [&](long line, const std::string& what) {
        findings.emplace_back(line, "warning: " + what);
    };
    SceneChecks checks(fault, strict ? fault : warning);
    const auto reader = openOrComplain(file, checks, fault);
    if (!reader) return unreadable;
    reader->setStrict(strict);
    reader->readDocument();
    std::stable_sort(findings.begin(), findings.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [line, what] : findings) out.write(place(file, line) + what + '\n');
    return hasFaults ? faulty : 0;
}

int check(const Options& options) {
    Output out;
    int status = 0;
    for (const std::string& file : options.files) {
        status = std::max(status, checkFile(file, options.strict, out));
    }
    out.finish();
    return status;
}

// ---- print ----

int print(const Options& options) {
    Output out;
    const char *noColor = std::getenv("NO_COLOR"), *terminal = std::getenv("TERM");
    const bool plain = (noColor && *noColor) || (terminal && std::string(terminal) == "dumb");
    const bool color = options.color == "always" || (options.color == "auto" && out.isTerminal() && !plain);
    ScenePrinter printer(out, color, options.identifiers);
    const auto reader = openOrComplain(options.in, printer, toStandardError(options.in));
    if (!reader) return unreadable;
    if (out.isTerminal()) reader->showNoProgress();
    const bool good = reader->readDocument() && !reader->hasFaults();
    out.finish();
    return good ? 0 : faulty;
}

// ---- writing ----

/// Says that the work was interrupted, after which OUT is as it was.
int interruption() {
    complain("interrupted");
    return interruptStatus();
}

/// Opens OUT, lets fill write to it, and puts the document in its place when fill is content.
template <class Fill>
int writeDocument(const std::string& path, const Fill& fill) {
    Output output;      // a closed pipe is an error, not a signal
    catchInterrupts();  // so that the temporary file goes
    try {
        DocumentFile file(path);
        KSXMLWriteStream stream(file.stream());
        SceneWriter writer(stream);
        errno = 0;
        const int status = fill(writer, file);
        if (isInterrupted()) return interruption();
        if (status != 0) return status;
        if (!writer.end()) file.fail(errno);
        file.commit();
        return 0;
    } catch (const std::exception& error) {
        if (isInterrupted()) return interruption();
        complain(std::string("cannot write ") + error.what());
        return faulty;
    }
}

int copy(const Options& options) {
    const Stats stats;
    return writeDocument(options.out, [&](SceneWriter& writer, DocumentFile& file) {
        const auto reader = openOrComplain(options.in, writer, toStandardError(options.in));
        if (!reader) return unreadable;
        if (!reader->readDocument() || reader->hasFaults()) {
            if (!writer.isGood() || isInterrupted()) return 0;  // told where the output is closed
            complain(options.in + ": not copied, because of what is said above");
            return faulty;
        }
        if (const auto count = reader->unknownCount()) {
            complain(options.in + ": left out " + std::to_string(count) +
                     (count == 1 ? " unknown element" : " unknown elements"));
        }
        if (options.stats) {
            std::fprintf(stderr, "%s\n", stats.report("copy", static_cast<double>(file.size())).c_str());
        }
        return 0;
    });
}

std::uint64_t seedOf(const Options& options) {
    if (options.hasSeed) return options.seed;
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

int make(const Options& options) {
    struct stat status {};
    if (!options.force && options.out != "-" && stat(options.out.c_str(), &status) == 0 &&
        S_ISREG(status.st_mode)) {
        complain(options.out + " exists; --force replaces it");
        return faulty;
    }
    return writeDocument(options.out, [&](SceneWriter& writer, DocumentFile& file) {
        if (options.size == 0) {
            makeSample(writer, seedOf(options));
        } else {
            Progress progress = Progress::ofBytes(options.size);
            makeLarge(writer, seedOf(options), [&] {
                progress.moveTo(file.size());
                return isInterrupted() || file.size() >= options.size;
            });
        }
        return 0;
    });
}

// ---- fingerprint ----

int fingerprintFile(const std::string& file, const Options& options, Output& out) {
    const Stats stats;
    KSHashWriteStream hash;
    SceneWriter writer(hash, false);
    const auto reader = openOrComplain(file, writer, toStandardError(file));
    if (!reader) return unreadable;
    if (!reader->readDocument() || reader->hasFaults()) return faulty;
    out.write(utf8(hash.getHash().getString()) + "  " + file + '\n');
    if (options.stats) std::fprintf(stderr, "%s\n", stats.report(file, sizeOf(file)).c_str());
    return 0;
}

int fingerprint(const Options& options) {
    Output out;
    int status = 0;
    for (const std::string& file : options.files) {
        status = std::max(status, fingerprintFile(file, options, out));
    }
    out.finish();
    return status;
}

CLI::App* add(CLI::App& scene, const char* name, const char* what, const char* examples,
              int (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = scene.add_subcommand(name, what);
    command->footer(std::string("Examples:\n") + examples);
    command->callback([run, options, command] {
        const CLI::Option* seed = command->get_option_no_throw("--seed");
        options->hasSeed = seed && seed->count();
        if (const int status = run(*options)) throw Exit{status};
    });
    return command;
}

}  // namespace

void addScene(CLI::App& app) {
    CLI::App* scene =
        app.add_subcommand("scene", "Make, check, print, rewrite and fingerprint project documents");
    scene->require_subcommand(1);
    scene->footer(
        "Examples:\n"
        "  kestrel scene new intro.xml\n"
        "  kestrel scene check *.xml\n"
        "  kestrel scene print intro.xml\n"
        "  kestrel scene copy --help");
    const auto options = std::make_shared<Options>();

    CLI::App* create = add(*scene, "new", "Write a small sample project",
                           "  kestrel scene new intro.xml\n"
                           "  kestrel scene new --seed 7 | kestrel scene print -",
                           make, options);
    CLI::App* generate = add(*scene, "generate", "Write a project of a given size, with random values",
                             "  kestrel scene generate large.xml --size 100MB\n"
                             "  kestrel scene generate - --size 1MB --seed 7 | kestrel scene fingerprint -",
                             make, options);
    for (CLI::App* command : {create, generate}) {
        command->add_option("OUT", options->out, "the document to write; - for standard output")
            ->capture_default_str();
        command->add_option("--seed", options->seed, "draw identifiers and values from this number");
        command->add_flag("--force", options->force, "replace OUT if it exists");
    }
    generate->add_option("--size", options->size, "at least this many bytes, such as 500KB or 100MB")
        ->required()
        ->transform(CLI::AsSizeValue(true))
        ->check(CLI::Range(std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max(), "POSITIVE"));

    CLI::App* checking =
        add(*scene, "check", "Report what is wrong with documents, a line for each fault or warning",
            "  kestrel scene check intro.xml && echo all well\n"
            "  kestrel scene check --strict *.xml\n"
            "  kestrel scene new | kestrel scene check -\n"
            "Warnings are for timecode modes that are not registered, transforms that cannot\n"
            "be inverted, and compositions and layers without frames. They alone leave the\n"
            "exit status 0; a fault makes it 1, an unreadable file 2.",
            check, options);
    checking->add_option("FILE", options->files, "documents; - for standard input")->required();
    checking->add_flag("--strict", options->strict, "warnings and unknown elements are faults too");

    CLI::App* printing = add(*scene, "print", "Print a document as an indented tree",
                             "  kestrel scene print intro.xml\n"
                             "  kestrel scene print --color always intro.xml | less -R",
                             print, options);
    printing->add_option("FILE", options->in, "the document; - for standard input")->required();
    printing->add_option("--color", options->color, "auto: when standard output is a terminal")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->capture_default_str();

    printing->add_flag("--identifiers", options->identifiers, "print identifiers too");

    CLI::App* copying =
        add(*scene, "copy", "Read a document and write it again; OUT is replaced when all of it is on disk",
            "  kestrel scene copy intro.xml clean.xml\n"
            "  kestrel scene copy intro.xml intro.xml\n"
            "  kestrel scene copy - - < intro.xml | cmp - intro.xml",
            copy, options);
    copying->add_option("IN", options->in, "the document to read; - for standard input")->required();
    copying->add_option("OUT", options->out, "the document to write; - for standard output")->required();

    CLI::App* fingerprints = add(
        *scene, "fingerprint", "Print a digest of each document's values; names and thumbnails do not count",
        "  kestrel scene fingerprint old.xml new.xml\n"
        "  kestrel scene fingerprint --stats large.xml",
        fingerprint, options);
    fingerprints->add_option("FILE", options->files, "documents; - for standard input")->required();
    for (CLI::App* command : {copying, fingerprints}) {
        command->add_flag("--stats", options->stats, "print time and peak memory on standard error");
    }
}

}  // namespace kestrel::tools
