// The books of the allocator under several threads and after a fork.
#include "AllocHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using testing::HasSubstr;

namespace {

constexpr unsigned threadCount = 8;

template <class Body>
void onThreads(Body body) {
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < threadCount; ++t) threads.emplace_back(body, t);
    for (std::thread& thread : threads) thread.join();
}

/// Runs body in a child process that ends with 0 if it returns true; the status, as from waitpid.
template <class Body>
int statusOfChild(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

struct Held {
    char* block;
    std::size_t size;
};

/// Allocates, resizes and frees at random; every block holds a pattern that is checked.
struct Churn {
    explicit Churn(unsigned seed) : random(seed), mark(static_cast<char>('A' + seed)) {}

    void step() {
        const std::size_t size = 1 + random() % 200;
        const auto choice = random() % 4;
        if (choice < 2 || held.empty()) {
            char* const block = static_cast<char*>(ksAlloc(size));
            if (!block) {
                ++refused;
                return;
            }
            held.push_back({block, size});
            std::memset(block, mark, size);
            ++allocated;
            return;
        }
        std::swap(held[random() % held.size()], held.back());
        Held& last = held.back();
        for (std::size_t i = 0; i < last.size; ++i) damaged += last.block[i] != mark;
        if (choice == 2) {
            last = {static_cast<char*>(ksRealloc(last.block, size)), size};
            std::memset(last.block, mark, size);
        } else {
            ksFree(last.block);
            held.pop_back();
        }
    }
    std::size_t bytes() const {
        std::size_t sum = 0;
        for (const Held& each : held) sum += each.size;
        return sum;
    }
    void freeAll() {
        for (const Held& each : held) ksFree(each.block);
        held.clear();
    }

    std::mt19937 random;
    char mark;
    std::vector<Held> held;
    unsigned allocated = 0, refused = 0, damaged = 0;
};

}  // namespace

TEST(KSAllocThreads, LoseNoBlockWhenHalfOfTheAllocationsFail) {
    AllocRun run("ksFailurePercentage", "50");
    std::vector<Churn> churns;
    for (unsigned t = 0; t < threadCount; ++t) churns.emplace_back(t);
    onThreads([&](unsigned t) {
        for (int i = 0; i < 10000; ++i) churns[t].step();
    });
    std::size_t bytes = 0, blocks = 0;
    unsigned used = 0, refused = 0, damaged = 0;
    for (const Churn& churn : churns) {
        bytes += churn.bytes();
        blocks += churn.held.size();
        used += churn.allocated;
        refused += churn.refused;
        damaged += churn.damaged;
    }
    EXPECT_EQ(damaged, 0u);
    EXPECT_GT(refused, used / 2);
    EXPECT_EQ(printedBy(ksAllocCheckAllFences), "");
    std::ostringstream live, total;
    live << "\n" << bytes << " bytes NOT freed (" << blocks << " blocks)\n";
    total << "Total blocks used: " << used << "\n";
    EXPECT_THAT(run.end(0), AllOf(HasSubstr(live.str()), HasSubstr(total.str())));
    onThreads([&](unsigned t) { churns[t].freeAll(); });  // after the end of the run
}

TEST(KSAllocThreads, TheLimitHoldsExactly) {
    AllocRun run("ksAllocatedBlocksLimit", "6");
    std::atomic<int> live{0}, most{0};
    onThreads([&](unsigned) {
        for (int i = 0; i < 5000; ++i) {
            void* const block = ksAlloc(8);
            if (!block) continue;
            const int now = ++live;
            int seen = most;
            while (now > seen && !most.compare_exchange_weak(seen, now)) {
            }
            --live;
            ksFree(block);
        }
    });
    EXPECT_LE(most, 5);
    EXPECT_NE(run.end(0).find("\n0 bytes NOT freed (0 blocks)\n"), std::string::npos);
}

TEST(KSAllocThreads, RunsMayStartAndEndWhileOthersAllocate) {
    AllocEnvironment environment;
    // In a process that ends without a look for leaks: what was allocated between two runs is foreign to
    // the next, which deliberately does not free it.
    const int status = statusOfChild([] {
        std::atomic<bool> isOver{false};
        std::vector<Churn> churns;
        for (unsigned t = 0; t < threadCount; ++t) churns.emplace_back(t);
        std::thread switcher([&] {
            while (!isOver) {
                ksAllocStart();
                std::this_thread::yield();
                ksAllocEnd(-1);
            }
        });
        onThreads([&](unsigned t) {
            for (int i = 0; i < 5000; ++i) churns[t].step();
        });
        isOver = true;
        switcher.join();
        unsigned damaged = 0;
        for (Churn& churn : churns) {
            damaged += churn.damaged;
            churn.freeAll();
        }
        return damaged == 0;
    });
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(KSAllocThreads, AForkedChildGoesOnWithACopyOfTheBooks) {
    AllocRun run;
    void* const before = ksAlloc(100);
    std::atomic<bool> isOver{false};
    std::thread other([&] {
        while (!isOver) ksFree(ksAlloc(50));  // holds the lock again and again
    });
    for (int i = 0; i < 50; ++i) {
        const int status = statusOfChild([before] {
            void* const own = ksAlloc(10);
            const bool isGood = own && ksAllocCheckFence(own) && ksAllocCheckFence(before);
            ksFree(own);
            ksFree(before);
            return isGood;
        });
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    isOver = true;
    other.join();
    ksFree(before);
}
