#include <kestrel/foundation/KSUser.h>

#include <kestrel/foundation/KSString.h>

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

/// The real user's entry, whose texts live in buffer; null when there is none or it does not fit.
const passwd* lookUpRealUser(passwd& entry, char (&buffer)[1024]) {
    passwd* found = nullptr;
    return ::getpwuid_r(::getuid(), &entry, buffer, sizeof buffer, &found) == 0 ? found : nullptr;
}

}  // namespace

bool KSUser::isSuperUser() { return ::geteuid() == 0; }

bool KSUser::getCurrentUserName(KSString* out) {
    if (!out) return false;
    out->clear();
    passwd entry;
    char buffer[1024];
    if (const passwd* user = lookUpRealUser(entry, buffer)) out->set(user->pw_name);
    return false;
}

bool KSUser::getCurrentUserFullName(KSString* out) {
    if (!out) return false;
    passwd entry;
    char buffer[1024];
    const passwd* user = lookUpRealUser(entry, buffer);
    if (!user) return false;
    out->set(user->pw_gecos);
    out->push_back(' ');
    return true;
}

bool KSUser::getUserHomeDir(KSString* out, const KSString& userName) {
    if (!out) return false;
    const std::unique_ptr<char, decltype(&std::free)> name(userName.createCStr(), &std::free);
    if (!name) return false;

    passwd entry;
    passwd* user = nullptr;
    std::vector<char> buffer(1024);
    while (::getpwnam_r(name.get(), &entry, buffer.data(), buffer.size(), &user) == ERANGE)
        buffer.resize(2 * buffer.size());
    if (!user || !user->pw_dir) return false;
    out->set(user->pw_dir);
    return true;
}

bool ksBackground(bool closeStandardStreams) {
    for (const int number : {SIGTTOU, SIGTTIN, SIGTSTP}) std::signal(number, SIG_IGN);
    const pid_t child = ::fork();
    if (child < 0) return false;
    if (child > 0) ::_exit(0);
    ::setsid();
    if (closeStandardStreams)
        for (int descriptor = 0; descriptor <= 2; ++descriptor) ::close(descriptor);
    return true;
}
