// Scratch directories, files, descriptor counts and a service manager's
// socket for the operating-system tests.
#ifndef VSUPT_TESTS_OSTESTING_H
#define VSUPT_TESTS_OSTESTING_H

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

// A fresh directory under /tmp, removed with all it holds at the end.
class ScratchDirectory {
public:
    ~ScratchDirectory() { std::filesystem::remove_all(m_path); }
    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    char m_name[21] = "/tmp/vsupt-os-XXXXXX";
    const std::string m_path = mkdtemp(m_name);
};

inline void writeFile(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

inline std::string readFile(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

inline long openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// The service manager's end of NOTIFY_SOCKET: a datagram socket bound to a
// path, or to an abstract name given with a leading "@".
class NotifySocket {
public:
    explicit NotifySocket(const std::string& name) : m_name(name)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path, sizeof address.sun_path - 1);
        if (name[0] == '@') {
            address.sun_path[0] = '\0';
        }
        const std::size_t length = offsetof(sockaddr_un, sun_path) + name.size() + (name[0] == '@' ? 0 : 1);
        m_bound = bind(m_descriptor, reinterpret_cast<sockaddr*>(&address), static_cast<socklen_t>(length)) == 0;
    }
    ~NotifySocket() { close(m_descriptor); }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    bool bound() const { return m_bound; }
    const std::string& name() const { return m_name; }

    // The next message, within ten seconds; empty when none came.
    std::string receive() const
    {
        pollfd readable{m_descriptor, POLLIN, 0};
        char message[256];
        const ssize_t length = poll(&readable, 1, 10000) == 1 ? recv(m_descriptor, message, sizeof message, 0) : 0;
        return std::string(message, length > 0 ? static_cast<std::size_t>(length) : 0);
    }

private:
    const std::string m_name;
    const int m_descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bool m_bound = false;
};

#endif
