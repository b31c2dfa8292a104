/// @file
/// Creating and removing directories, and reading the environment.
///
/// Both "/" and "\" separate the levels of a path given to
/// VornCreateDirectory; what it creates it writes with "/". A recursive
/// VornRemoveDirectoryImpl runs "/bin/rm -rf" in a child process and blocks
/// the calling thread until that has ended. None of the functions throws,
/// keeps state or takes a lock; they may run on any thread, though the
/// environment is read as it stands without a lock.
#ifndef VSUPT_VORNFILESYSTEM_H
#define VSUPT_VORNFILESYSTEM_H

#include <vsupt/VsuptExport.h>

#include <string>

namespace VornSupport {

/// Creates path and its missing parents with mode 0755 less the umask. True
/// when something of that name exists at the end, a plain file too. A level
/// that fails leaves the levels made before it.
VSUPT_API bool VornCreateDirectory(const std::string& path);

/// Removes the directory, with recursive true also when it is not empty.
/// On false, errorText and errorCode tell why (errorCode is an errno value,
/// or the exit code of rm); they are left alone when rmdir succeeds. A
/// recursive removal whose command could not be waited for, or ended by a
/// signal, counts as done.
VSUPT_API bool VornRemoveDirectoryImpl(const std::string& path, bool recursive, std::string& errorText,
                                       int& errorCode);

/// The value, or the empty string when the variable is not set. Only
/// VornKeyDataNotSupportedException may leave it, though nothing throws that
/// here: any other exception ends the process.
VSUPT_API std::string VornGetEnvironmentVariable(const std::string& name);

}  // namespace VornSupport

#endif
