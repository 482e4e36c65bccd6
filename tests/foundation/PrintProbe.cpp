// A program that prints through KSPrint in the way its first argument names. KSPrint decides once a
// process where its output goes, so every case needs a fresh one.
#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSUnreachable.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

[[gnu::noinline]] void probeFrame(int skip, bool* verbose) {
    KSPrintStack(skip, 7, verbose);
    asm volatile("");  // no tail call: this frame stays on the stack
}

extern "C" [[gnu::noinline]] void probe_c_frame(bool* verbose) {
    probeFrame(0, verbose);
    asm volatile("");
}

// A C function whose name alone would demangle as a type.
extern "C" [[gnu::noinline]] void xi(bool* verbose) {
    probeFrame(0, verbose);
    asm volatile("");
}

// Not exported, so that no name is found for its frame.
[[gnu::noinline]] static void namelessFrame(bool* verbose) {
    KSPrintStack(0, 0, verbose);
    asm volatile("");
}

int main(int argc, char** argv) {
    const std::string_view mode = argc > 1 ? argv[1] : "";
    bool verbose = false;  // only its address counts
    if (mode == "print") return KSPrint("%s %d\n", "text", 42) == 8 ? 0 : 1;
    if (mode == "indent") {
        KSPrintIndent(0, "zero\n");
        KSPrintIndent(3, "three %d\n", 3);
    }
    if (mode == "late-environment") {
        KSPrint("first\n");
        setenv("ksPrintUseLogFile", "1", 1);
        KSPrint("second\n");
    }
    if (mode == "stop") KS_UNREACHABLE("KSProbe", 648, "never printed");
    if (mode == "log-crash") {  // the message is in the file although nothing closes it
        KSPrint("before the crash\n");
        _exit(0);
    }
    if (mode == "log-stale") {
        char path[64];
        snprintf(path, sizeof path, "/tmp/output.%d.log", static_cast<int>(getpid()));
        std::FILE* stale = std::fopen(path, "w");
        if (!stale) return 2;
        std::fputs("of an earlier process with this id\n", stale);
        std::fclose(stale);
        KSPrint("fresh\n");
    }
    if (mode == "log-fork") {
        KSPrint("parent %d\n", static_cast<int>(getpid()));
        const pid_t child = fork();
        if (child == 0) {
            KSPrint("child\n");
            _exit(0);
        }
        int status = 1;
        waitpid(child, &status, 0);
        return status;
    }
    if (mode == "log-blocked") {  // a folder of that name stands in the way of the first message only
        char path[64];
        snprintf(path, sizeof path, "/tmp/output.%d.log", static_cast<int>(getpid()));
        if (symlink("/dev/null", path) != 0) return 2;
        const int dropped = KSPrint("dropped\n");
        unlink(path);
        KSPrint("kept\n");
        return dropped;
    }
    if (mode == "stack") probe_c_frame(nullptr);
    if (mode == "stack-short-name") xi(nullptr);
    if (mode == "stack-nameless") namelessFrame(nullptr);
    if (mode == "stack-nameless-verbose") namelessFrame(&verbose);
    if (mode == "stack-verbose") probe_c_frame(&verbose);
    if (mode == "stack-skip") probeFrame(1, nullptr);
    if (mode == "stack-skip-all") probeFrame(100000, nullptr);
    if (mode == "stack-named") {
        KSPrintStackStart("compositor");
        KSPrintStack(-5, 0, nullptr);
        KSPrintStackStop();
        KSPrintStackStart(nullptr);
        KSPrintStack(100000, 0, nullptr);
    }
    return 0;
}
