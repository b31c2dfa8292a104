#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornLogging.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <set>
#include <vector>

using namespace VornSupport;

// A program that cannot run, or is killed, reads as status 0. One trailing
// character that is no letter or digit is dropped from the command line.
TEST(VornExecuteProgramTest, WaitingGivesTheExitCodeAndLeavesTheProcessId)
{
    const struct {
        const char* commandLine;
        int status;
    } rows[] = {
        {"/bin/sh -c \"exit 255\"", 255}, {"/bin/sh -c \"exit 4\"\n", 4}, {"/bin/sh -c \"exit 6\"\n\n", 6},
        {"/no/such/program", 0},         {"no-path-search", 0},          {"", 0},
        {"/bin/sh -c \"kill -KILL $$\"", 0},
    };
    for (const auto& row : rows) {
        int processId = 12345;
        int status = 77;
        EXPECT_TRUE(VornExecuteProgram(row.commandLine, true, &processId, &status)) << row.commandLine;
        EXPECT_EQ(row.status, status) << row.commandLine;
        EXPECT_EQ(12345, processId) << row.commandLine;
    }
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
    EXPECT_FALSE(std::filesystem::exists(scratch / "ran"));
    EXPECT_EQ(before, openDescriptors());
    for (const std::string handle : {"input", "output"}) {
        EXPECT_NE(std::string::npos,
                  records.find("] VornExecuteProgram: could not duplicate requested standard " + handle + " handle: \n"));
    }
}

// The child writes its records between fork and exec, to the file and to
// stdout as the logger would, with the thread field of the thread that
// called: the child's one thread is a copy of it.
TEST(VornExecuteProgramTest, TheChildWritesItsLevelNineRecordsToEveryTarget)
{
    ScratchDirectory scratch;
    testing::internal::CaptureStderr();
    VornLogging logger(scratch / "exec", VornLogging::TargetFile | VornLogging::TargetStdout, 9);
    testing::internal::GetCapturedStderr();
    VornLogging::setInstance(logger);
    testing::internal::CaptureStdout();
    int status = 77;
    EXPECT_TRUE(VornExecuteProgram("/bin/sh -c \"exit 3\"", true, nullptr, &status));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3, status);

    std::string file;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path())) {
        file = readFile(entry.path());
    }
    EXPECT_EQ(printed, file);
    std::vector<std::string> child;
    std::set<std::string> threads;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        threads.insert(line.substr(32, line.find("] ") - 32));
        const std::string text = line.substr(line.find("] ") + 2);
        if (text == "VornExecuteProgram: child process id: 0" || text.rfind("VornExecuteProgram: argv[", 0) == 0) {
            EXPECT_EQ(line.substr(17, 15), " 9 Global     [") << line;
            child.push_back(text);
        }
    }
    EXPECT_EQ(child, (std::vector<std::string>{"VornExecuteProgram: child process id: 0",
                                                "VornExecuteProgram: argv[0] = /bin/sh",
                                                "VornExecuteProgram: argv[1] = -c", "VornExecuteProgram: argv[2] = exit 3"}));
    EXPECT_EQ(threads.size(), 1u) << file;
}
