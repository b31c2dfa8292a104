/// @class VornSupport::VornProgramOptions
/// A program's command line, parsed into its name, its options and its
/// positional arguments.
///
/// The constructors parse an argc/argv pair or one command-line string and
/// throw VornException, and nothing else, on an option they can't take. In
/// free mode every option is stored: "-name=value", "--name=value" and, with
/// slash options, "/name=value" store value under name. In strict mode the
/// options must be declared: the short option string "ab:" declares -a and
/// -b with data, the long one ":help:file.:" declares --help and --file with
/// data. There, a single-dash option is tried as a long name first, and takes
/// its data from the next argument ("-file out"); a double-dash option that
/// takes data stores nothing ("--file=out", "--file out"), and a short option
/// takes its data from the rest of its argument ("-bfoo") or the next one.
/// Letters can't be clustered: "-abc" is the option a. Options and positional
/// arguments mix freely; "--" ends nothing.
///
/// Options are kept in a VornProperties, several values for a repeated name.
/// An object is built by one thread; afterwards it may be read by several,
/// except for the stepping through the arguments.
#ifndef VSUPT_VORNPROGRAMOPTIONS_H
#define VSUPT_VORNPROGRAMOPTIONS_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornProperties.h>

#include <string>
#include <vector>

namespace VornSupport {

class VSUPT_API VornProgramOptions {
public:
    /// Parses argc and argv in strict mode; argv[0] is the program's name.
    VornProgramOptions(int argc, char** argv, const std::string& shortOptions, const std::string& longOptions,
                       bool slashOptions);
    /// Parses argc and argv in free mode; argv[0] is the program's name.
    VornProgramOptions(int argc, char** argv, bool slashOptions);
    /// Parses the line in strict mode. The first word of the line is the
    /// program's name.
    VornProgramOptions(const std::string& commandLine, const std::string& shortOptions,
                       const std::string& longOptions, bool slashOptions);
    /// Parses the line in free mode. The first word of the line is the
    /// program's name.
    VornProgramOptions(const std::string& commandLine, bool slashOptions);
    /// Copies name, options and arguments; the copy steps from the first
    /// argument.
    VornProgramOptions(const VornProgramOptions& other);
    /// Copies name, options and arguments; stepping starts again from the
    /// first argument.
    VornProgramOptions& operator=(const VornProgramOptions& other);

    /// The program's name as the command line gave it.
    const std::string& getProgramName() const;
    /// The options, several values for a repeated name.
    const VornProperties<std::string>& getOptions() const;
    /// The positional arguments in the order given.
    const std::vector<std::string>& getArguments() const;
    /// The number of positional arguments.
    unsigned int getArgumentCount() const;
    /// The positional argument at index. Throws VornException past the last
    /// argument.
    const std::string& getArgument(unsigned int index) const;

    /// Steps through the positional arguments from the first one.
    bool hasNextArgument() const;
    /// The next positional argument. Throws VornException past the last
    /// argument.
    const std::string& nextArgument();

    /// Parses argc and argv, strict or free, adding to the options and
    /// arguments already held; stepping starts again from the first argument.
    void parse(int argc, char** argv, const std::string& shortOptions, const std::string& longOptions, bool strict,
               bool slashOptions);
    /// Parses a command line as parse(argc, argv) does; its first word
    /// becomes the program's name.
    void parse(const std::string& commandLine, const std::string& shortOptions, const std::string& longOptions,
               bool strict, bool slashOptions);
    /// Stores one option given without its dashes; false, storing nothing,
    /// for a declared long option that takes data.
    bool longOption(const std::string& option, const std::string& longOptions, bool strict);

private:
    // A single-dash option in strict mode: true when it was a long option,
    // false when it is to be read as a letter.
    bool takeAsLongOption(const std::string& text, int& i, int argc, char** argv, const std::string& longOptions);

    std::string m_programName;
    VornProperties<std::string> m_options;
    std::vector<std::string> m_arguments;
    std::vector<std::string>::const_iterator m_nextArgument;
};

}  // namespace VornSupport

#endif
