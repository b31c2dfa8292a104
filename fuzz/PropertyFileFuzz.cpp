// Property lines and files of arbitrary bytes: the bytes are parsed line by
// line and loaded as a file into a narrow and a wide store. Nothing may
// crash or hang, and no store may hold an empty name, a name that starts a
// comment, or a value that starts with a blank. What a narrow store saves
// must load again.
#include <vsupt/VornProperties.h>

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using namespace VornSupport;

namespace {

std::string g_scratchDirectory;

void removeScratchDirectory()
{
    std::system(("rm -rf '" + g_scratchDirectory + "'").c_str());
}

// The files of one input, in a directory that goes when the fuzzer exits.
std::string scratchPath(const char* name)
{
    if (g_scratchDirectory.empty()) {
        char pattern[] = "/tmp/vsupt-fuzz-properties-XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            std::abort();
        }
        g_scratchDirectory = pattern;
        std::atexit(removeScratchDirectory);
    }
    return g_scratchDirectory + "/" + name;
}

template <class S>
void checkStore(const VornProperties<S>& store)
{
    using CharType = typename S::value_type;
    for (const auto& entry : store.getProperties()) {
        if (entry.first.empty() || entry.first[0] == CharType('#') || entry.second.empty()) {
            std::abort();
        }
        for (const S& value : entry.second) {
            if (!value.empty() && value[0] == CharType(' ')) {
                std::abort();
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);

    VornProperties<std::string> lines;
    std::istringstream in(bytes);
    std::string line;
    while (std::getline(in, line)) {
        lines.addProperty(line, '=');
        lines.addPropertyforWSmanDA(line);
    }
    checkStore(lines);

    const std::string file = scratchPath("input.properties");
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    VornProperties<std::string> narrow;
    VornProperties<ci_wstring> wide(false);
    if (!narrow.loadPropertiesImpl(file, '=') || !wide.loadPropertiesImpl(file, L'=')) {
        std::abort();
    }
    checkStore(narrow);
    checkStore(wide);

    const std::string saved = scratchPath("saved.properties");
    VornProperties<std::string> back;
    if (!narrow.savePropertiesImpl(saved) || !back.loadPropertiesImpl(saved, '=')) {
        std::abort();
    }
    checkStore(back);
    return 0;
}
