// benchmarks/Pinned.h - keeps a thread on one processor, so that both rows of a pair run the same way.
#pragma once

#include <sched.h>

#include <cstddef>

/// Until the end of the scope the calling thread, and every thread that it starts, runs only on the processor
/// with that index among those that it may use; the index counts round.
class Pinned {
public:
    explicit Pinned(long index) {
        sched_getaffinity(0, sizeof m_before, &m_before);
        long left = index % CPU_COUNT(&m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        for (std::size_t cpu = 0; cpu < CPU_SETSIZE; ++cpu)
            if (CPU_ISSET(cpu, &m_before) && left-- == 0) CPU_SET(cpu, &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    Pinned(const Pinned&) = delete;
    Pinned& operator=(const Pinned&) = delete;
    ~Pinned() { sched_setaffinity(0, sizeof m_before, &m_before); }

private:
    cpu_set_t m_before;
};
