// For tests that check which threads a process has: the count of its
// threads as the kernel lists them.
#ifndef VSUPT_TESTS_THREADCOUNT_H
#define VSUPT_TESTS_THREADCOUNT_H

#include <filesystem>
#include <iterator>

inline int countThreads()
{
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                                          std::filesystem::directory_iterator()));
}

#endif
