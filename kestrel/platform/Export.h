// kestrel/platform/Export.h - marks what the shared library exports; everything else is hidden.
#pragma once

#if defined(KESTREL_STATIC)
#define KESTREL_API
#else
#define KESTREL_API __attribute__((visibility("default")))
#endif
