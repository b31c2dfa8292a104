// A service is stopped by SIGTERM while its threads allocate and write
// records without pause, so that the signal lands in the allocator or in a
// record: the stop must still end the service, in order, every time.
#include <vsupt/VornLogging.h>
#include <vsupt/VornService.h>

#include <gtest/gtest.h>

#include "OsTesting.h"
#include "support/Watchdog.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using namespace std::chrono_literals;

namespace {

void setTerminationSignals(int how)
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(how, &set, nullptr);
}

// Its threads take the termination signals, which the thread of start
// blocks: a signal then always interrupts one of them at work.
class BusyService : public VornService {
public:
    bool serviceStart(const std::string&) override
    {
        for (unsigned seed = 1; seed <= 3; ++seed) {
            m_workers.emplace_back([this, seed] { work(seed); });
        }
        return true;
    }

    bool serviceStop() override
    {
        m_bDone = true;
        for (std::thread& worker : m_workers) {
            worker.join();
        }
        m_bStopped = true;
        return true;
    }

    bool stopped() const { return m_bStopped; }

private:
    void work(unsigned seed)
    {
        setTerminationSignals(SIG_UNBLOCK);
        std::minstd_rand random(seed);
        std::vector<std::unique_ptr<char[]>> blocks(8);
        while (!m_bDone) {
            const std::size_t size = 2048 + random() % 65536;
            blocks[random() % blocks.size()].reset(new char[size]);
            *VornLogging::getInstance() << setloglevel("stress", 5) << "block of " << size << endrecord;
        }
    }

    std::vector<std::thread> m_workers;
    std::atomic<bool> m_bDone{false};
    bool m_bStopped = false;
};

// The child's exit status: 0 when start returned true after serviceStop.
[[noreturn]] void runServiceInChild(const std::string& logName)
{
    VornLogging logger(logName, VornLogging::TargetFile, 9);
    VornLogging::setInstance(logger);
    setTerminationSignals(SIG_BLOCK);
    BusyService service;
    const bool ran = service.start("", false);
    _exit(ran && service.stopped() ? 0 : 1);
}

// The handler of SIGTERM is in place once the process catches it.
bool catchesTermination(pid_t pid)
{
    const std::string status = readFile("/proc/" + std::to_string(pid) + "/status");
    const auto field = status.find("SigCgt:");
    if (field == std::string::npos) {
        return false;
    }
    const unsigned long long caught = std::strtoull(status.c_str() + field + 7, nullptr, 16);
    return (caught >> (SIGTERM - 1)) & 1;
}

// The exit status, or -1 when the process had not ended within five
// seconds and was killed.
int waitWithinFiveSeconds(pid_t pid)
{
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(1ms);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// The texts of the service's own records appear in this order.
bool stoppedInOrder(const std::string& log)
{
    const char* const texts[] = {
        "VornService::start: waiting for service to exit", "VornService::stop: entering",
        "VornService::stop: exiting", "VornService::start: service completed.", "VornService::start: exiting"};
    std::string::size_type at = 0;
    for (const char* text : texts) {
        at = log.find(std::string("] ") + text + "\n", at);
        if (at == std::string::npos) {
            return false;
        }
    }
    return true;
}

std::string onlyLogFile(const std::string& directory)
{
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        return readFile(entry.path());
    }
    return std::string();
}

}  // namespace

TEST(ServiceStopStressTest, SigtermAtRandomMomentsEndsABusyServiceInOrder)
{
    const Watchdog watchdog(250s, "ServiceStopStressTest: the runs took more than 250 seconds\n");
    std::minstd_rand random(std::random_device{}());
    int hangs = 0;
    int failures = 0;
    for (int run = 0; run < 100; ++run) {
        const ScratchDirectory scratch;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            runServiceInChild(scratch / "stop");
        }
        for (int tries = 0; tries < 5000 && !catchesTermination(child); ++tries) {
            std::this_thread::sleep_for(1ms);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        kill(child, SIGTERM);
        const int status = waitWithinFiveSeconds(child);
        if (status == -1) {
            ++hangs;
        } else if (status != 0 || !stoppedInOrder(onlyLogFile(scratch.path()))) {
            ++failures;
        }
    }
    EXPECT_EQ(0, hangs) << "runs that did not end within five seconds, of 100";
    EXPECT_EQ(0, failures) << "runs that ended out of order, of 100";
}
