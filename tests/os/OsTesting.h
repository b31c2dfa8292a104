// Scratch directories, files and descriptor counts for the operating-system
// tests.
#ifndef VSUPT_TESTS_OSTESTING_H
#define VSUPT_TESTS_OSTESTING_H

#include <unistd.h>

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

#endif
