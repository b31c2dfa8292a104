// Scratch directories and descriptor counts for the operating-system tests.
#ifndef VSUPT_TESTS_OSTESTING_H
#define VSUPT_TESTS_OSTESTING_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// A fresh directory under /tmp, removed with all it holds at the end.
class ScratchDirectory {
public:
    ScratchDirectory()
    {
        char name[] = "/tmp/vsupt-os-XXXXXX";
        m_path = mkdtemp(name);
    }
    ~ScratchDirectory() { std::filesystem::remove_all(m_path); }

    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

inline void writeFile(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline bool exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

inline long openDescriptors()
{
    long count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

#endif
