#include <kestrel/foundation/KSUnreachable.h>

#include <kestrel/foundation/KSPrint.h>

#include <cstdio>
#include <cstdlib>

void KSShouldNotBeReached(const char* file, int line, const char* /*reason*/) {
    KSPrint("File %s, line %d should not have been reached:\n\t", file, line);
    std::fflush(stdout);
    std::abort();
}
