#include <vsupt/VornFileSystem.h>
#include <vsupt/VornKeyDataNotSupportedException.h>

#include "frame/ExceptionBorder.h"
#include "log/LibraryLog.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace VornSupport {

namespace {

constexpr mode_t kDirectoryMode = 0755;

bool exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

// Creates every level of path from the top. A leading separator is no
// level of its own.
bool createLevels(std::string path)
{
    std::size_t from = 1;
    for (;;) {
        const std::size_t separator = path.find_first_of("/\\", from);
        const std::string level = path.substr(0, separator);
        if (mkdir(level.c_str(), kDirectoryMode) != 0) {
            const int error = errno;
            if (error != EEXIST && !exists(level)) {
                logLibraryRecord(9, "VornCreateDirectory: couldn't create ", level, " (", error, ")");
                return false;
            }
        }
        if (separator == std::string::npos) {
            return true;
        }
        path[separator] = '/';
        from = separator + 1;
    }
}

std::string refusalText(const std::string& path)
{
    return "VornRemoveDirectory: Could not remove the directory " + path;
}

// Runs "/bin/rm -rf path". A command that could not be waited for, or was
// ended by a signal, counts as having done its work.
bool removeTree(const std::string& path, std::string& errorText, int& errorCode)
{
    std::string command = "rm";
    std::string option = "-rf";
    std::string target = path;
    char* const arguments[] = {&command[0], &option[0], &target[0], nullptr};

    const pid_t child = fork();
    if (child == 0) {
        execv("/bin/rm", arguments);
        _exit(errno);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) == -1 || !WIFEXITED(status)) {
        return true;
    }
    errorCode = WEXITSTATUS(status);
    if (errorCode != 0) {
        errorText = refusalText(path);
    }
    return errorCode == 0;
}

}  // namespace

bool VornCreateDirectory(const std::string& path)
{
    logLibraryRecord(9, "VornCreateDirectory: ", path);
    if (mkdir(path.c_str(), kDirectoryMode) == 0) {
        return true;
    }
    const int error = errno;
    if (error == EEXIST) {
        return true;
    }
    if (error != ENOENT) {
        return exists(path);
    }
    return createLevels(path);
}

bool VornRemoveDirectoryImpl(const std::string& path, bool recursive, std::string& errorText, int& errorCode)
{
    logLibraryRecord(9, "VornRemoveDirectory: Remove directoryImpl ", path);
    if (rmdir(path.c_str()) == 0) {
        return true;
    }
    const int error = errno;
    if (error == ENOTEMPTY && recursive) {
        return removeTree(path, errorText, errorCode);
    }
    errorText = refusalText(path);
    errorCode = error;
    return false;
}

std::string VornGetEnvironmentVariable(const std::string& name)
{
    return letOutOnly<VornKeyDataNotSupportedException>([&] {
        const char* value = std::getenv(name.c_str());
        return value != nullptr ? std::string(value) : std::string();
    });
}

}  // namespace VornSupport
