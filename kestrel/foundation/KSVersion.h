// kestrel/foundation/KSVersion.h - the library's version; the build reads it from here.
#pragma once

#define KESTREL_VERSION_MAJOR 0
#define KESTREL_VERSION_MINOR 1
#define KESTREL_VERSION_PATCH 0
#define KESTREL_VERSION_STRING "0.1.0"
