/// @class VornSupport::VornSetLogLevelManipulator
/// The value that setloglevel gives: a function to apply to the logger with a
/// category and a level, so that a record can open with its level in stream
/// style (logger << setloglevel(5) << ... << endrecord).
#ifndef VSUPT_VORNSETLOGLEVELMANIPULATOR_H
#define VSUPT_VORNSETLOGLEVELMANIPULATOR_H

#include <vsupt/VsuptExport.h>

#include <string>

namespace VornSupport {

class VornLogging;

class VSUPT_API VornSetLogLevelManipulator {
public:
    /// The function applied to the logger.
    using Function = VornLogging& (*)(VornLogging&, const std::string&, int);

    /// A manipulator setting level with no category.
    VornSetLogLevelManipulator(Function function, int level);
    /// A manipulator setting category and level.
    VornSetLogLevelManipulator(Function function, const std::string& category, int level);
    /// Copies the function, the category and the level.
    VornSetLogLevelManipulator(const VornSetLogLevelManipulator& other);
    ~VornSetLogLevelManipulator();

    /// The function applied to the logger.
    Function m_function;
    /// The category, empty for none.
    std::string m_category;
    /// The level.
    int m_level;
};

}  // namespace VornSupport

#endif
