// Option lines of arbitrary bytes split step by step: the splitting ends
// after at most one word per character and one more, and no word is longer
// than the line. The first byte chooses whether the separators and quotes
// overlap.
#include <vsupt/VornCmdLineTokenizer.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace VornSupport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const bool overlapping = data[0] & 1;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    VornCmdLineTokenizer<std::string> tokenizer(text);
    tokenizer.setSeparators(overlapping ? " \t\"" : " \t");
    tokenizer.setQuotes("\"'");
    std::size_t words = 0;
    while (tokenizer.hasMoreTokens()) {
        if (tokenizer.next().size() > text.size() || ++words > text.size() + 1) {
            std::abort();
        }
    }
    return 0;
}
