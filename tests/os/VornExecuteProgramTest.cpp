#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornLogging.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>

using namespace VornSupport;

namespace {

// The exit status VornExecuteProgram reports for commandLine, run and
// waited for; 77 when none was stored.
int statusOf(const std::string& commandLine)
{
    int processId = 12345;
    int status = 77;
    EXPECT_TRUE(VornExecuteProgram(commandLine, true, &processId, &status)) << commandLine;
    EXPECT_EQ(12345, processId) << "a waiting call leaves the process id alone";
    return status;
}

}  // namespace

TEST(VornExecuteProgramTest, WaitingGivesTheProgramsExitCodeWithOneTrailingCharacterDropped)
{
    EXPECT_EQ(255, statusOf("/bin/sh -c \"exit 255\""));
    EXPECT_EQ(4, statusOf("/bin/sh -c \"exit 4\"\n"));
    // Only one character goes: the quote before the second line end stays.
    EXPECT_EQ(6, statusOf("/bin/sh -c \"exit 6\"\n\n"));
}

TEST(VornExecuteProgramTest, ProgramThatCannotRunOrIsKilledReadsAsStatusZero)
{
    EXPECT_EQ(0, statusOf("/no/such/program"));
    EXPECT_EQ(0, statusOf("no-path-search"));
    EXPECT_EQ(0, statusOf(""));
    EXPECT_EQ(0, statusOf("/bin/sh -c \"kill -KILL $$\""));
}

TEST(VornExecuteProgramTest, NotWaitingGivesTheProcessIdAndLeavesTheStatus)
{
    int processId = 0;
    int status = 77;
    ASSERT_TRUE(VornExecuteProgram("/bin/sh -c \"exit 9\"", false, &processId, &status));
    EXPECT_EQ(77, status);
    int waitStatus = 0;
    ASSERT_EQ(processId, waitpid(processId, &waitStatus, 0));
    EXPECT_EQ(9, WEXITSTATUS(waitStatus));

    EXPECT_TRUE(VornExecuteProgram("/bin/true", true, nullptr, nullptr));
    EXPECT_TRUE(VornExecuteProgram("/bin/true", false, nullptr, nullptr));
    EXPECT_GT(wait(nullptr), 0);
}

TEST(VornExecuteProgramTest, HandlesBecomeStandardInputAndOutputAndStayOpen)
{
    ScratchDirectory scratch;
    writeFile(scratch / "in", "through cat\n");
    const int input = open((scratch / "in").c_str(), O_RDONLY | O_CLOEXEC);
    const int output = open((scratch / "out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int status = 77;
    EXPECT_TRUE(VornExecuteProgramEx("/bin/cat", input, output, true, nullptr, &status));
    EXPECT_EQ(0, status);
    EXPECT_EQ("through cat\n", readFile(scratch / "out"));
    EXPECT_EQ(0, close(input));
    EXPECT_EQ(0, close(output));
}

TEST(VornExecuteProgramTest, RefusedHandleNeverStartsTheProgramAndLeaksNothing)
{
    ScratchDirectory scratch;
    VornLogging logger("os", VornLogging::TargetStdout, 1);
    VornLogging::setInstance(logger);
    const long before = openDescriptors();
    const std::string touch = "/usr/bin/touch " + (scratch / "ran");
    int inStatus = 77;
    int outStatus = 77;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(VornExecuteProgramEx(touch, 987, -1, true, nullptr, &inStatus));
    EXPECT_TRUE(VornExecuteProgramEx(touch, -1, 987, true, nullptr, &outStatus));
    const std::string records = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0, inStatus);
    EXPECT_EQ(0, outStatus);
    EXPECT_FALSE(exists(scratch / "ran"));
    EXPECT_EQ(before, openDescriptors());
    for (const char* handle : {"input", "output"}) {
        EXPECT_NE(std::string::npos, records.find(std::string("] VornExecuteProgram: could not duplicate requested standard ") +
                                                  handle + " handle: \n"));
    }
}

TEST(VornExecuteProgramTest, ErrorMessageIsTheSystemsTextWithoutLineEnd)
{
    std::string narrow = "old";
    VornGetOSErrorMessage(ENOENT, narrow);
    EXPECT_EQ("No such file or directory", narrow);
    std::wstring wide = L"old";
    VornGetOSErrorMessage(EACCES, wide);
    EXPECT_EQ(L"Permission denied", wide);
}
