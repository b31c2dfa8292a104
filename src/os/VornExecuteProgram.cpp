#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include "log/ForkedChildRecords.h"
#include "log/LibraryLog.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <vector>

namespace VornSupport {

namespace {

// Between fork and exec the child of a process with other threads may find
// any lock (the logger's, the allocator's) held for ever, so it does only
// what is safe there: dup2, execv, write, _exit. Everything it needs is made
// before the fork: its argument vector and its own log records, which it
// writes with write(2). A handle it could not take over is told back to the
// parent through a pipe that closes itself at the exec.

// The handle the child could not take over, as sent through the pipe.
enum : char { kStdinRefused = 0, kStdoutRefused = 1 };

std::vector<std::string> commandWords(const std::string& commandLine)
{
    std::string line = commandLine;
    if (!line.empty() && !std::isalnum(static_cast<unsigned char>(line.back()))) {
        line.pop_back();
    }
    std::vector<std::string> words;
    VornParseCommandLine(line, words);
    return words;
}

// Points into words, with the null pointer execv expects at the end.
std::vector<char*> argumentVector(std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(&word[0]);
    }
    arguments.push_back(nullptr);
    return arguments;
}

// What the child tells at level 9, in its order: its side of the fork,
// then its arguments.
ForkedChildRecords childRecords(const std::vector<std::string>& words)
{
    ForkedChildRecords records;
    records.add(9, "VornExecuteProgram: child process id: ", 0);
    for (std::size_t i = 0; i < words.size(); ++i) {
        records.add(9, "VornExecuteProgram: argv[", i, "] = ", words[i]);
    }
    return records;
}

// ---------------------------------------------------------------------------
// The child, from fork to exec

// -1 and the target's own number leave the inherited descriptor. The
// pipe's write end is no handle of the caller's, even if its number was
// given; its read end is closed before.
bool takeOver(int handle, int target, int reportEnd)
{
    if (handle == -1 || handle == target) {
        return true;
    }
    return handle != reportEnd && dup2(handle, target) >= 0;
}

// Ends with 0 whatever happened, so that a waiting parent reads 0 for a
// program that could not be started.
[[noreturn]] void runChild(const ForkedChildRecords& records, char* const* arguments, int stdinHandle,
                           int stdoutHandle, const int report[2])
{
    if (report[0] >= 0) {
        close(report[0]);
    }
    records.write();
    char refused = kStdinRefused;
    bool taken = takeOver(stdinHandle, STDIN_FILENO, report[1]);
    if (taken) {
        refused = kStdoutRefused;
        taken = takeOver(stdoutHandle, STDOUT_FILENO, report[1]);
    }
    if (!taken) {
        if (report[1] >= 0 && write(report[1], &refused, 1) != 1) {
            // The parent then reports nothing.
        }
    } else if (arguments[0] != nullptr) {
        execv(arguments[0], arguments);
    }
    _exit(0);
}

// ---------------------------------------------------------------------------
// The parent

// Returns when the child has executed the program or ended.
void logChildReport(int readEnd)
{
    char refused;
    ssize_t count;
    do {
        count = read(readEnd, &refused, 1);
    } while (count < 0 && errno == EINTR);
    if (count != 1) {
        return;
    }
    logLibraryRecord(1, refused == kStdinRefused
                            ? "VornExecuteProgram: could not duplicate requested standard input handle: "
                            : "VornExecuteProgram: could not duplicate requested standard output handle: ");
}

// The status is read once, uninterrupted or not: a wait that did not
// complete reads as a program that returned 0.
void waitForChild(pid_t child, int* exitStatus)
{
    logLibraryRecord(9, "VornExecuteProgram: waiting for process ", child);
    int status = 0;
    waitpid(child, &status, 0);
    if (exitStatus == nullptr) {
        return;
    }
    if (!WIFEXITED(status)) {
        *exitStatus = 0;
        return;
    }
    *exitStatus = WEXITSTATUS(status);
    logLibraryRecord(9, "VornExecuteProgram: child process ", child, " completed with status ", *exitStatus);
}

template <class StringType, class CharType>
void assignUnrecognized(int errorNumber, const CharType* format, StringType& message)
{
    CharType text[1024];
    if constexpr (sizeof(CharType) == sizeof(char)) {
        std::snprintf(text, sizeof text, format, errorNumber, static_cast<unsigned int>(errorNumber));
    } else {
        std::swprintf(text, sizeof text / sizeof text[0], format, errorNumber, static_cast<unsigned int>(errorNumber));
    }
    message = text;
}

}  // namespace

bool VornExecuteProgram(const std::string& commandLine, bool wait, int* processId, int* exitStatus)
{
    logLibraryRecord(5, "VornExecuteProgram: Execution Started.");
    return VornExecuteProgramEx(commandLine, -1, -1, wait, processId, exitStatus);
}

bool VornExecuteProgramEx(const std::string& commandLine, int stdinHandle, int stdoutHandle, bool wait,
                          int* processId, int* exitStatus)
{
    logLibraryRecord(5, "VornExecuteProgramEx: Execution Started.");
    std::vector<std::string> words = commandWords(commandLine);
    std::vector<char*> arguments = argumentVector(words);
    const ForkedChildRecords records = childRecords(words);
    int report[2] = {-1, -1};
    if (pipe2(report, O_CLOEXEC) != 0) {
        report[0] = report[1] = -1;
    }

    const pid_t child = fork();
    if (child == 0) {
        runChild(records, arguments.data(), stdinHandle, stdoutHandle, report);
    }
    logLibraryRecord(9, "VornExecuteProgram: child process id: ", child);
    if (report[1] >= 0) {
        close(report[1]);
        if (child > 0) {
            logChildReport(report[0]);
        }
        close(report[0]);
    }

    if (child < 0) {
        if (exitStatus != nullptr) {
            *exitStatus = -1;
        }
        logLibraryRecord(1, "VornExecuteProgram: could not fork child process. ");
        return false;
    }
    if (!wait) {
        if (processId != nullptr) {
            *processId = child;
        }
        return true;
    }
    waitForChild(child, exitStatus);
    return true;
}

void VornGetOSErrorMessage(int errorNumber, std::string& message)
{
    message.clear();
    if (const char* text = std::strerror(errorNumber); text != nullptr && *text != '\0') {
        message = text;
    }
    message = VornStringUtilities::trim(message, std::string(" \t\r\n"), VornStringUtilities::trimBoth);
    if (message.empty()) {
        assignUnrecognized(errorNumber, "Unrecognized error code: %d (0x%08x)", message);
    }
}

void VornGetOSErrorMessage(int errorNumber, std::wstring& message)
{
    message.clear();
    if (const char* text = std::strerror(errorNumber); text != nullptr && *text != '\0') {
        message = VornStringUtilities::widen(text, VornLocaleFactory::getDefaultLocale(true));
    }
    message = VornStringUtilities::trim(message, std::wstring(L" \t\r\n"), VornStringUtilities::trimBoth);
    if (message.empty()) {
        assignUnrecognized(errorNumber, L"Unrecognized error code: %d (0x%08x)", message);
    }
}

}  // namespace VornSupport
