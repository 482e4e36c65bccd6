// kestrel info: the machine, the user, and the library.
#include <kestrel/Kestrel.h>

#include <cstdio>
#include <string>

#include "Commands.h"
#include "Text.h"

namespace kestrel::tools {

namespace {

void line(const char* name, const std::string& value) { std::printf("%-22s %s\n", name, value.c_str()); }

std::string mebibytes(unsigned long long bytes) { return std::to_string(bytes >> 20) + " MiB"; }

void printMachine() {
    KSString host;
    line("host", KSInfo::getSystemName(&host) ? utf8(host) : "unknown");
    line("processors", std::to_string(KSInfo::getProcessors()));
    line("byte order", KSInfo::isLittleEndian() ? "little-endian" : "big-endian");
    unsigned long long total, free, window, rest, resident, regions, gap;
    if (KSInfo::getMemoryInfo(&total, &free, &window, &rest, &resident, &regions, &gap)) {
        line("memory", mebibytes(total) + ", " + mebibytes(free) + " of it free");
        line("this process", mebibytes(resident) + " resident, " + mebibytes(regions) + " mapped");
    } else {
        line("memory", "unknown: the kernel's tables cannot be read");
    }
}

void printUser() {
    KSString name;
    KSUser::getCurrentUserName(&name);  // always false; the text tells
    KSString home;
    line("user", utf8(name) + (KSUser::isSuperUser() ? " (superuser)" : ""));
    line("home", KSUser::getUserHomeDir(&home, name) ? utf8(home) : "unknown");
}

void printLibrary() {
    KSString text;
    line("kestrel", KSLibrary::getVersion());
    KSLibrary::getDependencies(&text);
    line("stands on", utf8(text));
    KSLibrary::getVectorTargets(&text);
    const CFStringRef found =
        CFBundleCopyTableFolders(CFBundleGetBundleWithIdentifier(CFSTR(KESTREL_BUNDLE_IDENTIFIER)));
    const KSString folders(found);
    CFRelease(found);
    line("string tables", folders.empty() ? "compiled in" : utf8(folders));
    line("vector instructions", utf8(text) + " (the first is used)");
}

}  // namespace

void addInfo(CLI::App& app) {
    CLI::App* info =
        app.add_subcommand("info", "Print what the library knows of the machine, the user and itself");
    info->footer("Example:\n  kestrel info");
    info->callback([] {
        printMachine();
        printUser();
        printLibrary();
    });
}

}  // namespace kestrel::tools
