#include <vsupt/VornProgramOptions.h>
#include <vsupt/VornCmdLineTokenizer.h>
#include <vsupt/VornException.h>

#include "frame/ExceptionBorder.h"

namespace VornSupport {

namespace {

VornException unrecognizedOption(const std::string& dashes, const std::string& name)
{
    return VornException("VornProgramOptions::parse: Unrecognized option: " + dashes + name, 0);
}

VornException optionDataNotAvailable(const std::string& name)
{
    return VornException("VornProgramOptions::parse: option data not available for: -" + name, 0);
}

std::string programNameOf(int argc, char** argv)
{
    return argc > 0 && argv[0] != nullptr ? std::string(argv[0]) : std::string();
}

enum class LongOptionDeclaration { none, withoutData, withData };

// The name of "name=value" is what stands before the first "=".
std::string nameOf(const std::string& option)
{
    return option.substr(0, option.find('='));
}

LongOptionDeclaration declarationOf(const std::string& option, const std::string& longOptions)
{
    const std::string name = nameOf(option);
    if (longOptions.find(":" + name + ":") != std::string::npos) {
        return LongOptionDeclaration::withoutData;
    }
    if (longOptions.find(":" + name + ".:") != std::string::npos) {
        return LongOptionDeclaration::withData;
    }
    return LongOptionDeclaration::none;
}

bool isOption(const char* arg, bool slashOptions)
{
    return arg[0] == '-' || (slashOptions && arg[0] == '/');
}

// The one letter behind the dash; its data is the rest of the argument or
// else the next argument. Further letters of an option without data are
// dropped.
void storeShortOption(VornProperties<std::string>& options, const char* arg, int& i, int argc, char** argv,
                      const std::string& shortOptions)
{
    const char letter = arg[1];
    const std::string name(1, letter);
    const std::string::size_type declared = shortOptions.find(letter);
    if (declared == std::string::npos) {
        throw unrecognizedOption("-", name);
    }
    if (declared + 1 >= shortOptions.size() || shortOptions[declared + 1] != ':') {
        options.addProperty(name, std::string());
        return;
    }
    const char* rest = letter == '\0' ? arg + 1 : arg + 2;
    if (*rest != '\0') {
        options.addProperty(name, std::string(rest));
        return;
    }
    if (++i >= argc) {
        throw optionDataNotAvailable(name);
    }
    options.addProperty(name, std::string(argv[i]));
}

}  // namespace

VornProgramOptions::VornProgramOptions(int argc, char** argv, const std::string& shortOptions,
                                       const std::string& longOptions, bool slashOptions)
    : m_programName(programNameOf(argc, argv))
{
    parse(argc, argv, shortOptions, longOptions, true, slashOptions);
}

VornProgramOptions::VornProgramOptions(int argc, char** argv, bool slashOptions)
    : m_programName(programNameOf(argc, argv))
{
    parse(argc, argv, std::string(), std::string(), false, slashOptions);
}

VornProgramOptions::VornProgramOptions(const std::string& commandLine, const std::string& shortOptions,
                                       const std::string& longOptions, bool slashOptions)
{
    parse(commandLine, shortOptions, longOptions, true, slashOptions);
}

VornProgramOptions::VornProgramOptions(const std::string& commandLine, bool slashOptions)
{
    parse(commandLine, std::string(), std::string(), false, slashOptions);
}

VornProgramOptions::VornProgramOptions(const VornProgramOptions& other)
    : m_programName(other.m_programName),
      m_options(other.m_options),
      m_arguments(other.m_arguments),
      m_nextArgument(m_arguments.begin())
{
}

VornProgramOptions& VornProgramOptions::operator=(const VornProgramOptions& other)
{
    if (this != &other) {
        m_programName = other.m_programName;
        m_options = other.m_options;
        m_arguments = other.m_arguments;
        m_nextArgument = m_arguments.begin();
    }
    return *this;
}

const std::string& VornProgramOptions::getProgramName() const
{
    return m_programName;
}

const VornProperties<std::string>& VornProgramOptions::getOptions() const
{
    return m_options;
}

const std::vector<std::string>& VornProgramOptions::getArguments() const
{
    return m_arguments;
}

unsigned int VornProgramOptions::getArgumentCount() const
{
    return static_cast<unsigned int>(m_arguments.size());
}

const std::string& VornProgramOptions::getArgument(unsigned int index) const
{
    return letOutOnly<VornException>([&]() -> const std::string& {
        if (index >= m_arguments.size()) {
            throw VornException("VornProgramOptions::getArgument: index out of bounds", 0);
        }
        return m_arguments[index];
    });
}

bool VornProgramOptions::hasNextArgument() const
{
    return m_nextArgument != m_arguments.end();
}

const std::string& VornProgramOptions::nextArgument()
{
    if (!hasNextArgument()) {
        throw VornException("VornProgramOptions::nextArgument: no more arguments", 0);
    }
    return *m_nextArgument++;
}

void VornProgramOptions::parse(int argc, char** argv, const std::string& shortOptions,
                               const std::string& longOptions, bool strict, bool slashOptions)
{
    letOutOnly<VornException>([&] {
        for (int i = 1; i < argc; ++i) {
            const char* arg = argv[i];
            if (!isOption(arg, slashOptions)) {
                m_arguments.emplace_back(arg);
            } else if (arg[1] == '-') {
                longOption(arg + 2, longOptions, strict);
            } else if (!strict) {
                m_options.addProperty(std::string(arg + 1), '=');
            } else if (!takeAsLongOption(arg + 1, i, argc, argv, longOptions)) {
                storeShortOption(m_options, arg, i, argc, argv, shortOptions);
            }
        }
        m_nextArgument = m_arguments.begin();
    });
}

void VornProgramOptions::parse(const std::string& commandLine, const std::string& shortOptions,
                               const std::string& longOptions, bool strict, bool slashOptions)
{
    letOutOnly<VornException>([&] {
        VornCmdLineTokenizer<std::string> tokenizer(commandLine);
        tokenizer.setSeparators(" \t");
        tokenizer.setQuotes("\"'");
        if (tokenizer.hasMoreTokens()) {
            m_programName = tokenizer.next();
        }
        std::vector<std::string> words;
        while (tokenizer.hasMoreTokens()) {
            words.push_back(tokenizer.next());
        }
        // Counted as argc is: the program's own slot stays empty.
        std::vector<char*> arguments(1, nullptr);
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        parse(static_cast<int>(arguments.size()), arguments.data(), shortOptions, longOptions, strict,
              slashOptions);
    });
}

bool VornProgramOptions::longOption(const std::string& option, const std::string& longOptions, bool strict)
{
    return letOutOnly<VornException>([&] {
        if (strict) {
            switch (declarationOf(option, longOptions)) {
            case LongOptionDeclaration::withData:
                return false;
            case LongOptionDeclaration::none:
                throw unrecognizedOption("--", nameOf(option));
            case LongOptionDeclaration::withoutData:
                break;
            }
        }
        m_options.addProperty(option, '=');
        return true;
    });
}

// A long option that takes data takes the next argument here, under the
// whole text behind the dash. An undeclared name is decided without the
// exception longOption would throw, since parsing then goes on with a letter.
bool VornProgramOptions::takeAsLongOption(const std::string& text, int& i, int argc, char** argv,
                                          const std::string& longOptions)
{
    switch (declarationOf(text, longOptions)) {
    case LongOptionDeclaration::none:
        return false;
    case LongOptionDeclaration::withoutData:
        m_options.addProperty(text, '=');
        return true;
    case LongOptionDeclaration::withData:
        break;
    }
    if (++i >= argc) {
        throw optionDataNotAvailable(text);
    }
    m_options.addProperty(text, std::string(argv[i]));
    return true;
}

}  // namespace VornSupport
