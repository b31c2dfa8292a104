// Log records written by the child of a fork before it executes a program.
//
// Between fork and exec the child may neither allocate nor take a lock:
// another thread of the parent may have held the allocator's lock or the
// logger's at the moment of the fork, and nobody in the child frees it. So
// the parent prepares the records before the fork, each formatted in full as
// the installed logger would write it on the calling thread (the child's one
// thread carries that thread's id), and notes where the logger writes by
// its target bits: its file's descriptor, standard output. The child then
// writes the prepared text with write(2) alone. Whether a record is taken
// is decided at preparation, by the logger's level, as for any record of
// the library's own.
#ifndef VSUPT_FORKEDCHILDRECORDS_H
#define VSUPT_FORKEDCHILDRECORDS_H

#include <vsupt/VornLogging.h>

#include <sstream>
#include <string>

namespace VornSupport {

class ForkedChildRecords {
public:
    template <class... Items>
    void add(int level, const Items&... items)
    {
        if (!VornLogging::isAccessAllowed() || VornLogging::getInstance()->getLogLevel() < level) {
            return;
        }
        std::ostringstream text;
        (text << ... << items);
        append(level, text.str());
    }

    // For the child: write(2) alone. A target that refuses the text is
    // passed over: the child has nobody to tell, and the parent tells of
    // its own failed records.
    void write() const noexcept;

private:
    void append(int level, const std::string& text);

    std::string m_lines;
    int m_fileDescriptor = -1;
    bool m_toStdout = false;
};

}  // namespace VornSupport

#endif
