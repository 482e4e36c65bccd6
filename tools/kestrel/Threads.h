// tools/kestrel/Threads.h - one piece of work on several of the library's threads.
#pragma once

#include <kestrel/concurrency/KSThread.h>

#include <vector>

namespace kestrel::tools {

/// Calls work() on count threads, the calling one among them, and returns when all have. The work shares its
/// parts out by itself, and lets no exception out.
template <class Work>
void onThreads(unsigned int count, Work& work) {
    const auto run = [](void* job) { (*static_cast<Work*>(job))(); };
    std::vector<KSThread> threads;
    for (unsigned int i = 1; i < count; ++i) threads.emplace_back(run, &work);
    work();
    for (KSThread& thread : threads) thread.wait();
}

}  // namespace kestrel::tools
