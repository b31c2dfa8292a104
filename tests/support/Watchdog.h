// For tests under load whose failure would be a hang: ends the process
// with a message if the watchdog is still alive after its limit. It
// allocates nothing once armed, since a hang may be inside the allocator.
#ifndef VSUPT_TESTS_WATCHDOG_H
#define VSUPT_TESTS_WATCHDOG_H

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

class Watchdog {
public:
    Watchdog(std::chrono::seconds limit, const char* message)
        : m_limit(limit), m_message(message), m_thread([this] { watch(); })
    {
    }
    ~Watchdog()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }

private:
    void watch()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_wake.wait_for(lock, m_limit, [this] { return m_done; })) {
            (void)!write(2, m_message, std::strlen(m_message));
            _exit(1);
        }
    }

    const std::chrono::seconds m_limit;
    const char* const m_message;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_done = false;
    std::thread m_thread;
};

#endif
