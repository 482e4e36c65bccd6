#include <kestrel/net/detail/SystemError.h>

#include <cerrno>
#include <system_error>

namespace kestrel::detail {

KSString getSystemError() {
    const int number = errno;
    return KSString(std::generic_category().message(number).c_str());  // strerror, but safe among threads
}

}  // namespace kestrel::detail
