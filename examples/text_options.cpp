// Text and options: a command line parsed in strict mode against declared
// short options and in free mode as name=value texts, a pattern of the library's regular expression dialect
// found and replaced, versions compared and tested against ranges, and the
// string utilities.
#include <vsupt/VornProgramOptions.h>
#include <vsupt/VornRegularExpression.h>
#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornVersion.h>

#include <cstdio>
#include <string>

using namespace VornSupport;

int main()
{
    // -v takes no data, -p takes the next word.
    VornProgramOptions strict("server -v -p 8080 start", "vp:", "", false);
    std::printf("program %s: port %s, %u argument(s), the first: %s\n", strict.getProgramName().c_str(),
                strict.getOptions().getProperty("p").c_str(), strict.getArgumentCount(),
                strict.getArgumentCount() > 0 ? strict.getArgument(0).c_str() : "none");
    VornProgramOptions free("server -port=8080 -config=/etc/server.conf", false);
    std::printf("free mode: port %s, config %s\n", free.getOptions().getProperty("port").c_str(),
                free.getOptions().getProperty("config").c_str());

    // A pattern that starts with a literal is looked for along the text.
    VornRegularExpression<std::string> port;
    port.setPattern("port [0-9]+");
    unsigned long length = 0;
    const unsigned long at = port.find(std::string("open port 8080 now"), length, 0);
    VornRegularExpression<std::string> marker;
    marker.setPattern("x[0-9]*");
    std::printf("\"port [0-9]+\" at %lu, %lu characters; x-numbers replaced: %s\n", at, length,
                marker.replace("x1 y x22", "#", VornRegularExpression<std::string>::occurrenceAll).c_str());

    const VornVersion running("2.4.1");
    std::printf("2.4.1 %s 2.10\n", running < VornVersion("2.10") ? "<" : ">=");

    std::vector<std::string> words;
    VornParseCommandLine("copy \"my file\" backup", words);
    std::printf("%zu words, the second: %s; trimmed: [%s]\n", words.size(), words.size() > 1 ? words[1].c_str() : "",
                VornStringUtilities::trim<std::string>("  padded  ", " ", VornStringUtilities::trimBoth).c_str());
    return at == 5 && length == 9 && strict.getOptions().getProperty("p") == "8080" ? 0 : 1;
}
