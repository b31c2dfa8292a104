// Command lines of arbitrary bytes split for execution: no word is empty or
// holds a NUL, and the words together are never longer than the line.
#include <vsupt/VornStringUtilities.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

using namespace VornSupport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string line(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> words{"earlier"};
    VornParseCommandLine(line, words);
    std::size_t length = 0;
    for (const std::string& word : words) {
        if (word.empty() || word.find('\0') != std::string::npos) {
            std::abort();
        }
        length += word.size();
    }
    if (length > line.size() && !line.empty()) {
        std::abort();
    }
    return 0;
}
