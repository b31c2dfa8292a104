// Narrow and wide conversions of arbitrary bytes: whatever the input, widen
// and narrow either return or throw VornException, and a round trip of pure
// ASCII gives the text back up to its first NUL.
#include <vsupt/VornException.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace VornSupport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::locale loc = VornLocaleFactory::getDefaultLocale(false);
    try {
        const std::wstring wide = VornStringUtilities::widen(bytes, loc);
        const std::string back = VornStringUtilities::narrow(wide, loc);
        bool ascii = true;
        for (char c : bytes) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        if (ascii && back != bytes.substr(0, bytes.find('\0'))) std::abort();
    } catch (const VornException&) {
    }
    return 0;
}
