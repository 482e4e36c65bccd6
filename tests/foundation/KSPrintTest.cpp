#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSUnreachable.h>

#include <gtest/gtest.h>

TEST(KSPrint, X) {
    KSPrintIndent(3, "x\n");
    bool v = true;
    KSPrintStack(0, 0, &v);
}
