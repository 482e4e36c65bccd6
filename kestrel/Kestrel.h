// kestrel/Kestrel.h - every public header of the library.
#pragma once

#include <kestrel/color/KSColor.h>
#include <kestrel/concurrency/KSAtomic.h>
#include <kestrel/concurrency/KSBarrier.h>
#include <kestrel/concurrency/KSConditionVariable.h>
#include <kestrel/concurrency/KSEvent.h>
#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/concurrency/KSSemaphore.h>
#include <kestrel/concurrency/KSThread.h>
#include <kestrel/concurrency/KSThreadNS.h>
#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/foundation/KSVersion.h>
#include <kestrel/platform/CoreFoundation.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSSerializer.h>
#include <kestrel/serialization/KSSerializerWriteStream.h>
#include <kestrel/serialization/KSUUID.h>
#include <kestrel/time/KSTime.h>
