#include <kestrel/Kestrel.h>

int main() { return KSPrint("Kestrel %s found and linked\n", KESTREL_VERSION_STRING) > 0 ? 0 : 1; }
