// The number readers against the standard functions that they stand for.
#include <kestrel/foundation/detail/NumberText.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const std::size_t length = std::strlen(text.c_str());  // the standard functions stop at a zero
    const std::vector<char> copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
    const char* const end = copy.data() + copy.size();
    char* standardEnd = nullptr;

    const auto check = [&](auto value, auto standard) {
        const char* place = copy.data();
        const bool inRange = kestrel::detail::readNumber(place, end, value);
        errno = 0;
        const auto want = standard(text.c_str(), &standardEnd);
        require(place - copy.data() == standardEnd - text.c_str());
        require(value == static_cast<decltype(value)>(want) || (want != want && value != value));
        if constexpr (std::is_integral_v<decltype(value)>)
            require(inRange == (errno != ERANGE));
        else
            require(inRange == !(errno == ERANGE && (want == 0 || std::isinf(want))));
    };
    check(0LL, [](const char* t, char** e) { return std::strtoll(t, e, 10); });
    check(0ULL, [](const char* t, char** e) { return std::strtoull(t, e, 10); });
    check(0.0, [](const char* t, char** e) { return std::strtod(t, e); });
    check(0.0f, [](const char* t, char** e) { return std::strtod(t, e); });
    return 0;
}
