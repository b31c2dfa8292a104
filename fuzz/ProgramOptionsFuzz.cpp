// Program options over arbitrary argument vectors. The input is cut at NUL
// bytes: the first piece is the string of short options, the second that of
// long ones, the rest are the arguments. The first byte chooses the mode and
// whether slashes start options. Parsing either succeeds or throws
// VornException; the same pieces joined by blanks go through the
// command-line form too.
#include <vsupt/VornException.h>
#include <vsupt/VornProgramOptions.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

using namespace VornSupport;

namespace {

std::vector<std::string> piecesAtNul(const std::string& text)
{
    std::vector<std::string> pieces;
    std::string::size_type start = 0;
    for (;;) {
        const std::string::size_type end = text.find('\0', start);
        pieces.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos) {
            return pieces;
        }
        start = end + 1;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const bool strict = data[0] & 1;
    const bool slashOptions = data[0] & 2;
    std::vector<std::string> pieces = piecesAtNul(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    pieces.resize(std::max<std::size_t>(pieces.size(), 2));
    const std::string shortOptions = pieces[0];
    const std::string longOptions = pieces[1];

    std::string programName = "fuzz";
    std::vector<char*> argv{programName.data()};
    std::string line = programName;
    for (std::size_t i = 2; i < pieces.size(); ++i) {
        argv.push_back(pieces[i].data());
        line += " " + pieces[i];
    }
    argv.push_back(nullptr);
    const int argc = static_cast<int>(argv.size()) - 1;
    try {
        VornProgramOptions options = strict ? VornProgramOptions(argc, argv.data(), shortOptions, longOptions, slashOptions)
                                            : VornProgramOptions(argc, argv.data(), slashOptions);
        for (unsigned i = 0; i < options.getArgumentCount(); ++i) {
            options.getArgument(i);
        }
    } catch (const VornException&) {
    }
    try {
        VornProgramOptions options = strict ? VornProgramOptions(line, shortOptions, longOptions, slashOptions)
                                            : VornProgramOptions(line, slashOptions);
        options.getOptions().size();
    } catch (const VornException&) {
    }
    return 0;
}
