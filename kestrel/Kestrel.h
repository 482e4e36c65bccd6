// kestrel/Kestrel.h - every public header of the library.
#pragma once

#include <kestrel/color/KSColor.h>
#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSVersion.h>
#include <kestrel/platform/CoreFoundation.h>
#include <kestrel/time/KSTime.h>
