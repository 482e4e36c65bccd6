// tests/concurrency/Helpers.h - threads whose state a test can see, and limits that end with a scope.
#pragma once

#include <kestrel/concurrency/KSEvent.h>
#include <kestrel/concurrency/KSThread.h>

#include <dirent.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <utility>

/// Runs a function on a KSThread and joins it at the end.
class TestThread {
public:
    explicit TestThread(std::function<void()> body) : m_body(std::move(body)), m_thread(run, this) {}
    TestThread(const TestThread&) = delete;
    TestThread& operator=(const TestThread&) = delete;
    ~TestThread() { join(); }

    void join() {
        if (m_isJoined) return;
        m_thread.wait();
        m_isJoined = true;
    }
    void cancel() { m_thread.cancel(); }

    /// Returns once the kernel says that the thread sleeps in a call. Asked after the thread's last step
    /// before the call under test, that means that the call blocks. Returns too if the thread has ended.
    void waitUntilAsleep() const {
        while (!m_isOver && state() != 'S') std::this_thread::yield();
    }

    /// Sends a signal whose handler does not restart calls.
    void sendSignal() const { pthread_kill(handle(), SIGUSR1); }

    /// Sends the signal and returns when the handler has run.
    void interrupt() const {
        const int before = signalCount().load();
        sendSignal();
        while (!m_isOver && signalCount().load() == before) std::this_thread::yield();
    }

    /// Sends ten signals, each while the thread sleeps in a call; returns when it sleeps again.
    void interruptTenTimes() const {
        for (int i = 0; i < 10; ++i) {
            waitUntilAsleep();
            interrupt();
        }
        waitUntilAsleep();
    }

    static void installHandler() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++signalCount(); };
        sigaction(SIGUSR1, &action, nullptr);
    }

private:
    static std::atomic<int>& signalCount() {
        static std::atomic<int> count{0};
        return count;
    }
    static void run(void* self) {
        auto& thread = *static_cast<TestThread*>(self);
        struct End {
            ~End() { isOver = true; }  // also when the thread is cancelled
            std::atomic<bool>& isOver;
        } const end{thread.m_isOver};
        thread.m_handle = pthread_self();
        thread.m_id = static_cast<int>(syscall(SYS_gettid));
        thread.m_body();
    }
    pthread_t handle() const {
        while (m_id == 0) std::this_thread::yield();
        return m_handle;
    }
    char state() const {
        handle();
        const std::string path = "/proc/self/task/" + std::to_string(m_id.load()) + "/stat";
        std::FILE* file = std::fopen(path.c_str(), "re");
        char letter = '?';
        if (file) {
            if (std::fscanf(file, "%*d (%*[^)]) %c", &letter) != 1) letter = '?';
            std::fclose(file);
        }
        return letter;
    }

    std::function<void()> m_body;
    std::atomic<pthread_t> m_handle{};
    std::atomic<int> m_id{0};
    std::atomic<bool> m_isOver{false};
    bool m_isJoined = false;
    KSThread m_thread;  // last: it uses the others
};

inline void raise(KSEvent& event) {
    event.lock();
    event.raise();
}

inline void lower(KSEvent& event) {
    event.lock();
    event.lower();
}

/// Sets the soft limit on open descriptors until the end of the scope.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t soft) {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit changed = m_before;
        changed.rlim_cur = soft < m_before.rlim_max ? soft : m_before.rlim_max;
        setrlimit(RLIMIT_NOFILE, &changed);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before{};
};

/// The numbers of all open descriptors of the process.
inline std::set<int> openDescriptors() {
    std::set<int> result;
    DIR* folder = opendir("/proc/self/fd");
    const int own = dirfd(folder);
    while (const dirent* entry = readdir(folder)) {
        const int number = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && number != own) result.insert(number);
    }
    closedir(folder);
    return result;
}
