#include <kestrel/foundation/KSPrint.h>

#include <kestrel/platform/detail/FileDescriptor.h>
#include <kestrel/platform/detail/StackCollector.h>

#include <cxxabi.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// Set by the first print, never reset.
int __ksPrint_Initialized = 0;
int __ksPrint_UseLogFile = 0;
std::FILE* logStream = nullptr;

const char* theProgName = "UNKNOWN";

/// The demangled form of a name "__Z...", which is a mangled name with the underscore of the symbol table;
/// any other name as it is. (The demangler would take the C functions xi and nl for types.)
struct ReadableName {
    explicit ReadableName(const char* symbol) : text(symbol) {
        if (std::strncmp(symbol, "__Z", 3) != 0) return;
        std::size_t size = 1024;
        buffer = static_cast<char*>(std::malloc(size));
        int status = -1;
        char* demangled = abi::__cxa_demangle(symbol + 1, buffer, &size, &status);
        if (demangled) buffer = demangled;  // the buffer may have grown
        if (status == 0) text = buffer;
    }
    ReadableName(const ReadableName&) = delete;
    ReadableName& operator=(const ReadableName&) = delete;
    ~ReadableName() { std::free(buffer); }

    const char* text;
    char* buffer = nullptr;
};

void printFrame(const CrawlFrame& frame, bool verbose) {
    if (!frame.symbolName) {
        if (verbose)
            KSPrint("\t0x%08lX\t0x%08lX\t<UNKNOWN>\n", frame.frameAddress, frame.programCounter);
        else
            KSPrint("\t0x%08lX\t<UNKNOWN>\n", frame.programCounter);
        return;
    }
    const ReadableName name(frame.symbolName);
    if (verbose)
        KSPrint("\t0x%08lX\t0x%08lX\t%s +0x%X\n", frame.frameAddress, frame.programCounter, name.text,
                static_cast<unsigned>(frame.offset));
    else
        KSPrint("\t0x%08lX\t%s\n", frame.programCounter, name.text);
}

}  // namespace

int KSPrintVA(const char* format, va_list args) {
    if (!__ksPrint_Initialized) {
        __ksPrint_UseLogFile = std::getenv("ksPrintUseLogFile") ? 1 : 0;
        __ksPrint_Initialized = 1;
    }
    if (!__ksPrint_UseLogFile) return std::vprintf(format, args);

    if (!logStream) {
        char path[64];
        std::snprintf(path, sizeof path, "/tmp/output.%d.log", static_cast<int>(::getpid()));
        logStream = kestrel::detail::openFreshFile(path);
        if (!logStream) return 0;
    }
    const int result = std::vfprintf(logStream, format, args);
    std::fflush(logStream);
    return result;
}

int KSPrint(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = KSPrintVA(format, args);
    va_end(args);
    return result;
}

int KSPrintIndent(unsigned int level, const char* format, ...) {
    if (level) KSPrint("%*.*s", static_cast<int>(level * 2), static_cast<int>(level * 2), "");
    va_list args;
    va_start(args, format);
    const int result = KSPrintVA(format, args);
    va_end(args);
    return result;
}

void KSPrintStackStart(const char* progName) { theProgName = progName; }

void KSPrintStackStop() {}

void KSPrintStack(int skip, int /*ignored*/, bool* verbose) {
    const int process = static_cast<int>(::getpid());
    if (theProgName)
        KSPrint("Printing stack for process %d (%s):\n", process, theProgName);
    else
        KSPrint("Printing stack for process %d:\n", process);
    if (verbose != nullptr) KSPrint("\tFrame\t\tPC\t\t\tCaller +offset\n");

    const std::size_t first = skip > 0 ? static_cast<std::size_t>(skip) : 0;
    std::vector<CrawlFrame> frames = kestrel::detail::collectStack(1);  // without this function
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (i >= first) printFrame(frames[i], verbose != nullptr);
        std::free(frames[i].symbolName);
    }
}
