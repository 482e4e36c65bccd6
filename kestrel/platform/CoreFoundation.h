// kestrel/platform/CoreFoundation.h - the platform objects the public interface speaks of.
//
// On Apple systems these are the system's own. Elsewhere the headers below declare the subset that the
// library and its callers need, under the same names but with C++ linkage, so that they cannot collide
// with another library's C symbols in one process.
#pragma once

#if defined(__APPLE__)
#include <CoreFoundation/CoreFoundation.h>
#else
#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFBundle.h>
#include <kestrel/platform/CFData.h>
#include <kestrel/platform/CFDictionary.h>
#include <kestrel/platform/CFStream.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/CFURL.h>
#include <kestrel/platform/CFXMLNode.h>
#include <kestrel/platform/CFXMLParser.h>
#endif
