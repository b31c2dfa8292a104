// Dates from arbitrary text: setDateTime either reads the text, refuses it
// with one of its messages, or throws VornInvalidDateException; a refusal
// leaves the date as it was.
#include <vsupt/VornDateTime.h>
#include <vsupt/VornInvalidDateException.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

using namespace VornSupport;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    VornDateTime date;
    const VornDateTime before(date);
    std::string error;
    try {
        if (!date.setDateTimeFromStrImpl(text, error)) {
            if (error != "Incorrect RFC1123 DateTime format" && error != "Incorrect DateTime format") std::abort();
            if (date.getTime() != before.getTime()) std::abort();
        }
    } catch (const VornInvalidDateException&) {
    }
    return 0;
}
