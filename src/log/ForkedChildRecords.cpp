#include "log/ForkedChildRecords.h"

#include "os/WriteWhole.h"

#include <unistd.h>

#include <cstdio>

namespace VornSupport {

// The library's own records have no category; the logger names them so.
void ForkedChildRecords::append(int level, const std::string& text)
{
    const VornLogging& logger = *VornLogging::getInstance();
    logger.formatLine(m_lines, level, "Global", text);
    const bool toFile = (logger.m_target & VornLogging::TargetFile) != 0 && logger.m_pFile != nullptr;
    m_fileDescriptor = toFile ? fileno(logger.m_pFile) : -1;
    m_toStdout = (logger.m_target & VornLogging::TargetStdout) != 0;
}

void ForkedChildRecords::write() const noexcept
{
    if (m_lines.empty()) {
        return;
    }
    if (m_fileDescriptor >= 0) {
        writeWhole(m_fileDescriptor, m_lines.data(), m_lines.size());
    }
    if (m_toStdout) {
        writeWhole(STDOUT_FILENO, m_lines.data(), m_lines.size());
    }
}

}  // namespace VornSupport
