// Decryption of arbitrary input. The first byte chooses the strength and
// the key length, the key follows, then the input; the output starts as the
// input reversed. Whatever the bytes, the output keeps its length or grows
// to the input's, and from position 8(k-1) on, k being the number of blocks
// of the input, it keeps what it held.
#include <vsupt/VornEncryption.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace VornSupport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const auto strength = (data[0] & 0x80) != 0 ? VornEncryption::StrengthHigh : VornEncryption::StrengthLow;
    const std::size_t keyLength = std::min<std::size_t>(data[0] & 0x7f, size - 1);
    const std::string key(reinterpret_cast<const char*>(data) + 1, keyLength);
    std::string input(reinterpret_cast<const char*>(data) + 1 + keyLength, size - 1 - keyLength);
    std::string before(input.rbegin(), input.rend());
    before.resize(before.size() / 2);
    std::string output = before;

    VornEncryption cipher(strength);
    std::string error;
    const bool done = cipher.decryptDataImpl(key, input, output, error);
    if (!done) {
        if (!key.empty() || error != "The key passed is empty") std::abort();
        return 0;
    }
    if (input.empty()) {
        if (!output.empty()) std::abort();
        return 0;
    }
    const std::size_t blocks = (input.size() + 7) / 8;
    if (output.size() != std::max(before.size(), input.size())) std::abort();
    for (std::size_t i = 8 * (blocks - 1); i < output.size(); ++i) {
        const char expected = i < before.size() ? before[i] : '\0';
        if (output[i] != expected) std::abort();
    }
    return 0;
}
