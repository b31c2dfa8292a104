/// @file
/// Starting another program, and the text of an operating system error.
///
/// VornExecuteProgramEx forks once and executes the program named by the
/// first word of commandLine, as a path (no search along PATH, no shell);
/// the words are split by VornParseCommandLine after one trailing character
/// that is no letter or digit (a line end, a closing quote) is dropped. The
/// child inherits the environment, the signal mask and every descriptor
/// that is not close-on-exec; stdinHandle and stdoutHandle, unless -1 or
/// their own number, are duplicated onto its descriptors 0 and 1 and stay
/// open on both sides. Nothing here touches a signal or takes a lock, so
/// the functions may run on any thread; with wait true the calling thread
/// sleeps in waitpid until the child ends.
///
/// At log level 9 the parent and the child each write "VornExecuteProgram:
/// child process id: " with their side of the fork, and the child then one
/// "VornExecuteProgram: argv[i] = word" record per word. The child's records
/// are formatted before the fork and written by the child with write(2)
/// alone, since a child of a threaded process may neither allocate nor take
/// the logger's lock.
///
/// The result is false only when the fork failed (then *exitStatus is -1).
/// *exitStatus, with wait true, is what the program returned (0 to 255); it
/// is 0 as well when the program could not be started, could not take over
/// a handle, or did not end normally (a signal). With wait false it is left
/// alone, *processId gets the child's id, and the caller reaps the child.
/// Either pointer may be null.
#ifndef VSUPT_VORNEXECUTEPROGRAM_H
#define VSUPT_VORNEXECUTEPROGRAM_H

#include <vsupt/VsuptExport.h>

#include <string>

namespace VornSupport {

/// VornExecuteProgramEx with the caller's own standard input and output.
VSUPT_API bool VornExecuteProgram(const std::string& commandLine, bool wait, int* processId, int* exitStatus);
/// Starts the program of commandLine with stdinHandle and stdoutHandle as
/// its standard input and output, and with wait true waits for its end.
VSUPT_API bool VornExecuteProgramEx(const std::string& commandLine, int stdinHandle, int stdoutHandle, bool wait,
                                    int* processId, int* exitStatus);

/// The system's text for errorNumber without surrounding blanks or line
/// ends, or "Unrecognized error code: N (0xNNNNNNNN)" when it has none.
VSUPT_API void VornGetOSErrorMessage(int errorNumber, std::string& message);
/// The same text, widened.
VSUPT_API void VornGetOSErrorMessage(int errorNumber, std::wstring& message);

}  // namespace VornSupport

#endif
