// kestrel/platform/CFBundle.h - localised texts, found by the identifier of what they belong to.
//
// A bundle is what holds the string tables of a library, an application or a plug-in. Its tables are files
//     <folder>/<bundle identifier>/<locale>.lproj/<table>.strings
// of lines "key" = "text"; in UTF-8 or marked UTF-16, with comments as in C. A lookup asks the user's locale
// first, then the locale without its country, then "Base": fr_CA, fr, Base. The user's locale is the
// process's LC_MESSAGES; while that is the C locale, the environment (LC_ALL, LC_MESSAGES, LANG) names it.
//
// The folders are, in this order: those that the application registered, the last one first; share/kestrel
// beside the folder of the library itself, where an installation has its resources, also after a move, and
// the build tree a copy of them; the resource folder that this build was configured to be installed in. The
// library's own tables are compiled in as well, so that it finds them without any folder.
//
// Ownership  bundles live as long as the process: do not release what a Get function returns.
// Threads    any.
// Errors     a table that cannot be read is reported on standard error once, with file, line and reason;
//            its texts are then missing, and a missing text is the caller's default.
// Example
//     CFBundleAddSearchFolder("/opt/studio/resources");
//     CFBundleRef bundle = CFBundleGetBundleWithIdentifier(CFSTR("org.example.studio"));
//     CFStringRef title = CFBundleCopyLocalizedString(bundle, CFSTR("Title"), nullptr, nullptr);
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/Export.h>

struct __CFBundle;
using CFBundleRef = __CFBundle*;

/// The identifier of the library's own bundle.
#define KESTREL_BUNDLE_IDENTIFIER "org.kestrel.Kestrel"

/// Adds a folder that is searched before those that were added earlier, and makes tables that were read
/// already be looked up again. False, and no effect, when the path is null or no folder.
KESTREL_API bool CFBundleAddSearchFolder(const char* path);
/// The bundle of this identifier; null when no folder has one.
KESTREL_API CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier);
/// The identifier, not retained; null for a null bundle.
KESTREL_API CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
/// The folders that hold tables of the bundle, in the order of the search, a line each; empty when there are
/// none and the library's own tables come from within it. Null for a null bundle.
KESTREL_API CFStringRef CFBundleCopyTableFolders(CFBundleRef bundle);
/// The text of key in a table ("Localizable" for null). Without one: value, or, when that is null or empty,
/// the key itself. The caller releases the result, which is null only for a null key and value.
KESTREL_API CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                                    CFStringRef tableName);
