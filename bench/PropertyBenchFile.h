// The property file the data benchmarks share: 100 000 lines of name=value,
// written once per run to a scratch directory that is removed at exit.
#ifndef VSUPT_BENCH_PROPERTYBENCHFILE_H
#define VSUPT_BENCH_PROPERTYBENCHFILE_H

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace vsupt_bench {

class ScratchDirectory {
public:
    ScratchDirectory()
    {
        char pattern[] = "/tmp/vsupt-bench-data-XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            std::perror("mkdtemp");
            std::abort();
        }
        m_path = pattern;
    }
    ~ScratchDirectory() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

inline const ScratchDirectory& scratchDirectory()
{
    static const ScratchDirectory directory;
    return directory;
}

// Names in the dotted style of configuration files, in shuffled order so
// that no reader profits from sorted input.
inline const std::vector<std::pair<std::string, std::string>>& propertyLines()
{
    static const std::vector<std::pair<std::string, std::string>> lines = [] {
        std::vector<std::pair<std::string, std::string>> result;
        const unsigned count = 100000;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned n = (i * 7919u) % count;
            result.emplace_back("service.section" + std::to_string(n % 97) + ".key" + std::to_string(n),
                                "value of setting " + std::to_string(n) + " with some text");
        }
        return result;
    }();
    return lines;
}

inline const std::string& propertyFile()
{
    static const std::string path = [] {
        const std::string file = scratchDirectory().path() + "/bench.properties";
        std::ofstream out(file);
        for (const auto& line : propertyLines()) {
            out << line.first << '=' << line.second << '\n';
        }
        return file;
    }();
    return path;
}

inline std::string scratchFile()
{
    return scratchDirectory().path() + "/saved.properties";
}

}  // namespace vsupt_bench

#endif
