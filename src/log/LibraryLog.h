// The library's own diagnostics: one record at a level, written only when a
// logger is installed and its level takes the record, so that a disabled
// diagnostic costs the guard alone.
#ifndef VSUPT_LIBRARYLOG_H
#define VSUPT_LIBRARYLOG_H

#include <vsupt/VornLogging.h>

namespace VornSupport {

template <class... Items>
void logLibraryRecord(int level, const Items&... items)
{
    if (!VornLogging::isAccessAllowed() || VornLogging::getInstance()->getLogLevel() < level) {
        return;
    }
    VornLogging& log = *VornLogging::getInstance();
    log << setloglevel(level);
    (log << ... << items);
    log << endrecord;
}

}  // namespace VornSupport

#endif
