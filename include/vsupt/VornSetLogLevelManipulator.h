// The value that setloglevel gives: a function to apply to the logger with a
// category and a level, so that a record can open with its level in stream
// style (logger << setloglevel(5) << ... << endrecord).
#ifndef VSUPT_VORNSETLOGLEVELMANIPULATOR_H
#define VSUPT_VORNSETLOGLEVELMANIPULATOR_H

#include <vsupt/VsuptExport.h>

#include <string>

namespace VornSupport {

class VornLogging;

class VSUPT_API VornSetLogLevelManipulator {
public:
    using Function = VornLogging& (*)(VornLogging&, const std::string&, int);

    VornSetLogLevelManipulator(Function function, int level);
    VornSetLogLevelManipulator(Function function, const std::string& category, int level);
    VornSetLogLevelManipulator(const VornSetLogLevelManipulator& other);
    ~VornSetLogLevelManipulator();

    Function m_function;
    std::string m_category;
    int m_level;
};

}  // namespace VornSupport

#endif
