// kestrel/foundation/KSUser.h - questions about the user, and going into the background.
#pragma once

#include <kestrel/platform/Export.h>

class KSString;

/// Answers about the user whose process this is; class functions only.
///
/// Threads    all functions may be called from any thread.
/// Errors     a null out, and a user that nobody knows, give false.
/// Example
///     KSString home;
///     if (KSUser::getUserHomeDir(&home, KSString("render"))) openProjects(home);
class KESTREL_API KSUser {
public:
    KSUser() = delete;

    /// True when the effective user is the superuser.
    static bool isSuperUser();

    /// Clears out and sets it to the login name of the real user. The result is false in every case, also
    /// when the name was found: test out instead.
    static bool getCurrentUserName(KSString* out);

    /// Unfinished on purpose: sets out to the full name of the real user and then stops the process, since it
    /// calls KSString::push_back. False, with out as it was, when the user is unknown.
    static bool getCurrentUserFullName(KSString* out);

    /// Sets out to the home folder of the user with that login name. False, with out as it was, when the user
    /// or the folder is unknown.
    static bool getUserHomeDir(KSString* out, const KSString& userName);
};

/// Turns the process into a background daemon: ignores SIGTTOU, SIGTTIN and SIGTSTP, forks, and starts a new
/// session in the child. The parent process ends at once with status 0, without running exit handlers.
/// @param closeStandardStreams  closes the descriptors 0, 1 and 2 in the child
/// @return true in the child; false, in the only process there is, when it cannot fork.
KESTREL_API bool ksBackground(bool closeStandardStreams);
