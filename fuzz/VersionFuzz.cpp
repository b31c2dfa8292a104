// Versions and version range lists from arbitrary text. The input is two
// texts split at the first line feed: both parse or throw VornException, the
// range list of the whole input too, and compare gives opposite
// answers for the two orders.
#include <vsupt/VornException.h>
#include <vsupt/VornVersion.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace VornSupport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string::size_type split = input.find('\n');
    VornVersion first;
    VornVersion second;
    try {
        first.parse(input.substr(0, split));
    } catch (const VornException&) {
    }
    try {
        second = split == std::string::npos ? std::string() : input.substr(split + 1);
    } catch (const VornException&) {
    }
    const int forward = VornVersion::compare(first, second);
    const int backward = VornVersion::compare(second, first);
    if (forward != (backward == 0 ? 0 : 3 - backward)) std::abort();
    first.toString();

    try {
        const VornVersionRange holds;
        for (const auto& range : VornVersion::createRangeVector(input)) {
            holds(range, second);
        }
    } catch (const VornException&) {
    }
    return 0;
}
