#include <kestrel/platform/detail/StackCollector.h>

#include <kestrel/foundation/KSPrint.h>

#include <dlfcn.h>
#include <unwind.h>

#include <cstring>
#include <string>
#include <utility>

namespace kestrel::detail {

namespace {

struct Walk {
    std::vector<CrawlFrame> frames;
    int skip;
};

_Unwind_Reason_Code visit(_Unwind_Context* context, void* data) {
    Walk& walk = *static_cast<Walk*>(data);
    if (walk.skip > 0) {
        --walk.skip;
        return _URC_NO_REASON;
    }
    CrawlFrame frame{_Unwind_GetIP(context), _Unwind_GetCFA(context), nullptr, 0};
    if (frame.programCounter == 0) return _URC_END_OF_STACK;
    // A return address may be the first byte of the next function: the call stands just before it.
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(frame.programCounter - 1), &info) && info.dli_sname) {
        const bool mangled = std::strncmp(info.dli_sname, "_Z", 2) == 0;
        std::string name(mangled ? "_" : "");
        name += info.dli_sname;
        frame.symbolName = ::strdup(name.c_str());
        frame.offset = frame.programCounter - reinterpret_cast<std::uintptr_t>(info.dli_saddr);
    }
    walk.frames.push_back(frame);
    return _URC_NO_REASON;
}

}  // namespace

[[gnu::noinline]] std::vector<CrawlFrame> collectStack(int skip) {
    Walk walk{{}, skip + 1};  // and this function
    _Unwind_Backtrace(visit, &walk);
    return std::move(walk.frames);
}

}  // namespace kestrel::detail
