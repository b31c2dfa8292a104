// For tests that pin the library's own log records: the texts of the
// records a piece of code writes to stdout, without their line prefixes.
#ifndef VSUPT_TESTS_LOGRECORDS_H
#define VSUPT_TESTS_LOGRECORDS_H

#include <vsupt/VornLogging.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace log_records {

// The texts of the log lines in output, without their prefixes.
inline std::vector<std::string> recordTexts(const std::string& output)
{
    std::vector<std::string> texts;
    std::string::size_type start = 0;
    while (start < output.size()) {
        const auto end = output.find('\n', start);
        const std::string line = output.substr(start, end - start);
        const auto bracket = line.find("] ");
        texts.push_back(bracket == std::string::npos ? line : line.substr(bracket + 2));
        start = end == std::string::npos ? output.size() : end + 1;
    }
    return texts;
}

// The texts of the records body writes with a logger at the given level
// installed for the while.
template <class Body>
std::vector<std::string> recordsAt(int level, Body body)
{
    VornSupport::VornLogging logger("log", VornSupport::VornLogging::TargetStdout, level);
    VornSupport::VornLogging::setInstance(logger);
    testing::internal::CaptureStdout();
    body();
    return recordTexts(testing::internal::GetCapturedStdout());
}

}  // namespace log_records

#endif
