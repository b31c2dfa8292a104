// One buffer written whole to a descriptor with write(2) alone, so that it
// may run where nothing else may: in a signal handler, or in the child of a
// fork before it executes a program. The system call is made directly
// rather than through the C library's write, which is a cancellation
// point: there a cancellation sent just before the caller turned kills off
// can still act (the library marks the thread asynchronous for the call),
// and it would unwind out of this noexcept function and end the process.
#ifndef VSUPT_WRITEWHOLE_H
#define VSUPT_WRITEWHOLE_H

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace VornSupport {

// Goes on after an interruption and after a short write. False, with errno
// set, when the descriptor stops taking the rest.
inline bool writeWhole(int descriptor, const char* data, std::size_t size) noexcept
{
    while (size > 0) {
        const ssize_t written = syscall(SYS_write, descriptor, data, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            if (written == 0) {
                errno = EIO;
            }
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace VornSupport

#endif
