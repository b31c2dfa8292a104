// Data and files: a property store saved to a name=value file and loaded
// back, a date checked, values through an object stream, and text through
// Blowfish.
#include <vsupt/VornBufferStream.h>
#include <vsupt/VornDateTime.h>
#include <vsupt/VornEncryption.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornStringUtilities.h>

#include <cstdio>
#include <string>
#include <unistd.h>

using namespace VornSupport;

int main()
{
    const std::string path = "data_files_example_" + std::to_string(getpid()) + ".properties";
    VornProperties<std::string> settings;
    settings.setProperty("host", "db.example.org");
    settings.setProperty("port", "5432");
    const bool saved = settings.saveProperties(path);
    VornProperties<std::string> loaded;
    const bool read = loaded.loadProperties(path);
    unlink(path.c_str());
    std::printf("saved %s, loaded %s: %lu properties, host %s, port %s\n", saved ? "yes" : "no", read ? "yes" : "no",
                loaded.size(), loaded.getProperty("host").c_str(), loaded.getProperty("port").c_str());

    VornDateTime date;
    std::string error;
    const bool valid = date.setDateTimeImpl(29, 2, 2024, 13, 45, 0, error);
    std::printf("29.2.2024 valid: %s, weekday %d, leap year %s\n", valid ? "yes" : "no", date.getWeekday(),
                date.isLeapYear() ? "yes" : "no");

    VornBufferStream stream;
    stream << 42 << 7L;
    int small = 0;
    long large = 0;
    stream >> small >> large;
    std::printf("through the stream: %d %ld\n", small, large);

    VornEncryption cipher;
    std::string secret;
    cipher.encryptData("key of mine", "attack at dawn", secret);
    std::printf("encrypted to %zu bytes: %s\n", secret.size(),
                VornBytesToHex(secret.data(), static_cast<int>(secret.size())).c_str());
    return saved && read && loaded.getProperty("port") == "5432" && valid && small == 42 && large == 7 ? 0 : 1;
}
