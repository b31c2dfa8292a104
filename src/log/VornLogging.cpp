#include <vsupt/VornLogging.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornDateTime.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include "log/LibraryLog.h"
#include "log/VornLoggingEventTimerThread.h"
#include "thread/KillDeferral.h"

#include <pthread.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

namespace VornSupport {

namespace {

// Scratch space for number items. A thread writes it only while it holds the
// lock of the logger it writes to; one buffer for each thread keeps two
// loggers written at once from sharing it.
thread_local char g_szLogBuf[8192];

const int kAllCategoriesLevel = 9;
const long kQuietTimerMs = 60000;

// The logger and the second for which this thread last found the quiet
// timer queued (see startQuietTimer).
struct QuietTimerSeen {
    const VornLogging* logger = nullptr;
    unsigned long loggersGone = 0;
    std::int64_t second = 0;
};

thread_local QuietTimerSeen t_quietTimerSeen;

// A logger made where a destroyed one stood is not the one remembered.
std::atomic<unsigned long> g_loggersGone{0};

// "YYYYMMDD_HH:MM:SS" of the local time now, as a fresh VornDateTime gives
// it. Records come many to a second, so each thread keeps the text of the
// last second it formatted.
const char* localTimeStamp()
{
    struct CachedStamp {
        std::time_t second = -1;
        char text[80] = {};
    };
    thread_local CachedStamp cached;
    const std::time_t now = std::time(nullptr);
    if (now != cached.second) {
        const VornDateTime stamp;
        std::snprintf(cached.text, sizeof cached.text, "%04d%02d%02d_%02d:%02d:%02d", stamp.getYear(),
                      stamp.getMonth() + 1, stamp.getDay(), stamp.getHour(), stamp.getMinute(), stamp.getSecond());
        cached.second = now;
    }
    return cached.text;
}

int currentThreadTag()
{
    return static_cast<int>(pthread_self());
}

void appendNumber(std::string& line, int value)
{
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    line.append(digits, end);
}

// The prefix "YYYYMMDD_HH:MM:SS level category [thread] ", with the category
// left-aligned in ten columns and never cut. Like the text, the category
// ends at its first NUL.
void appendPrefix(std::string& line, int level, const std::string& category)
{
    line += localTimeStamp();
    line += ' ';
    appendNumber(line, level);
    line += ' ';
    const std::size_t nameLength = std::strlen(category.c_str());
    line.append(category.c_str(), nameLength);
    if (nameLength < 10) {
        line.append(10 - nameLength, ' ');
    }
    line += " [";
    appendNumber(line, currentThreadTag());
    line += "] ";
}

// The text of the record in progress where the stream keeps it, without
// the copy that str() makes: the put area of its buffer, which a class
// derived from the buffer may name.
struct RecordText : std::stringbuf {
    static std::string_view of(std::ostringstream& stream)
    {
        char* (std::streambuf::*const putBase)() const = &RecordText::pbase;
        char* (std::streambuf::*const putPointer)() const = &RecordText::pptr;
        const std::stringbuf& buffer = *stream.rdbuf();
        const char* begin = (buffer.*putBase)();
        return std::string_view(begin, static_cast<std::size_t>((buffer.*putPointer)() - begin));
    }
};

void writeLine(FILE* stream, const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

// The configured name with its last extension (the last dot anywhere, in a
// directory too) replaced by a number from rand() and ".log". One leading
// double quote goes; a closing one normally leaves with the extension.
std::string logFileName(const std::string& configured)
{
    std::string name = configured.substr(0, configured.rfind('.'));
    name += std::to_string(std::rand());
    name += ".log";
    if (!name.empty() && name[0] == '"') {
        name.erase(0, 1);
    }
    return name;
}

}  // namespace

VornLogging* VornLogging::m_pInstance = nullptr;

// ---------------------------------------------------------------------------
// Construction and configuration

VornLogging::VornLogging() : VornLogging("log", TargetStdout, -1) {}

VornLogging::VornLogging(const std::string& fileName, int target, int level)
    : m_target(target),
      m_logLevel(level),
      m_currentLevel(kAllCategoriesLevel),
      m_pFile(nullptr),
      m_timer(kQuietTimerMs, false),
      m_fileName(fileName),
      m_bPrefix(true),
      m_bTimerCancelled(true)
{
    m_timer.addDependent(*this);
    startLogging();
}

VornLogging::~VornLogging()
{
    if (m_pInstance == this) {
        m_pInstance = nullptr;
    }
    VornLogging::stopLogging(0);
    ++g_loggersGone;
}

void VornLogging::setInstance(VornLogging& logger)
{
    m_pInstance = &logger;
}

void VornLogging::setTarget(int target)
{
    if (target == m_target) {
        return;
    }
    stopLogging(target);
    m_target = target;
    startLogging();
}

int VornLogging::getTarget() const
{
    return m_target;
}

void VornLogging::setLogLevel(const std::string& category, int level)
{
    if (level < -1 || level > 9) {
        return;
    }
    m_categoryLevels[category] = level;
}

int VornLogging::getLogLevel(const std::string& category) const
{
    const auto found = m_categoryLevels.find(category);
    return found != m_categoryLevels.end() ? found->second : m_logLevel;
}

void VornLogging::setCurrentLevel(int level)
{
    withKillsDeferred([&] { setCurrentLevel(std::string(), level); });
}

void VornLogging::setCurrentLevel(const std::string& category, int level)
{
    withKillsDeferred([&] {
        VornCriticalSection guard(m_lock, true);
        if (level >= -1) {
            m_category = category;
            m_currentLevel = level;
        }
    });
}

void VornLogging::startLogging()
{
    if ((m_target & TargetFile) != 0) {
        openLogFile();
    }
}

void VornLogging::stopLogging(int newTarget)
{
    if ((m_target & TargetFile) != 0 && (newTarget & TargetFile) == 0 && m_pFile != nullptr) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
    }
}

void VornLogging::openLogFile()
{
    if (m_pFile != nullptr) {
        return;
    }
    const std::string name = logFileName(m_fileName);
    std::fprintf(stderr, "VornLogging: Opening %s for logging...\n", name.c_str());
    m_pFile = std::fopen(name.c_str(), "w");
    if (m_pFile == nullptr) {
        std::fprintf(stderr, "VornLogging: Cannot open log file %s (%d)\n", name.c_str(), errno);
    }
}

// ---------------------------------------------------------------------------
// The quiet timer

// The timer runs on a record's account from its first granted item to
// endrecord, and m_bTimerCancelled says whether it does. Neither end of a
// record touches the timer list if it need not. endrecord only raises the
// flag: the timer stays queued, and if it expires before another record has
// begun, its handler sees the flag and stops it, without a thread. A record
// that begins restarts the timer, unless it is queued already for the very
// second a restart would give it, as it is for every record after the first
// in that second; each thread remembers the last second it found so, and
// then needs no lock of the list at all. A timer found so cannot be
// expiring meanwhile, since its second lies a full period ahead; and the
// flag is lowered only once no handler of the timer runs, so a handler
// never takes a record just begun for one that has lasted the period.
//
// The flag is read by the handler without m_lock, so it is read and written
// atomically.

void VornLogging::cancelTimer()
{
    withKillsDeferred([this] { stopQuietTimer(); });
}

void VornLogging::stopQuietTimer()
{
    __atomic_store_n(&m_bTimerCancelled, true, __ATOMIC_RELEASE);
}

void VornLogging::resetTimer()
{
    withKillsDeferred([this] { startQuietTimer(); });
}

// The 60 seconds count from the record's first granted item.
void VornLogging::startQuietTimer()
{
    if (!__atomic_load_n(&m_bTimerCancelled, __ATOMIC_ACQUIRE)) {
        return;
    }
    QuietTimerSeen& seen = t_quietTimerSeen;
    const std::int64_t due = static_cast<std::int64_t>(std::time(nullptr)) + kQuietTimerMs / 1000;
    const unsigned long loggersGone = g_loggersGone.load(std::memory_order_relaxed);
    if (seen.logger != this || seen.loggersGone != loggersGone || seen.second != due) {
        seen.second = m_timer.resetUnlessUnchanged();
        seen.logger = this;
        seen.loggersGone = loggersGone;
    }
    __atomic_store_n(&m_bTimerCancelled, false, __ATOMIC_RELEASE);
}

// Runs inside the timer manager's scan, which holds the manager's locks:
// taking m_lock here would take them in the opposite order to a writer, so
// the record is finished on a thread of its own.
void VornLogging::handleNotification(VornCollaborator&, const VornNotification&)
{
    if (__atomic_load_n(&m_bTimerCancelled, __ATOMIC_ACQUIRE)) {
        m_timer.stop();
        return;
    }
    VornLoggingEventTimerThread* thread = new VornLoggingEventTimerThread(this);
    thread->setMarkForDeath();
    thread->start();
}

// endrecord gets through only when no live thread is inside a record: then
// the text a cancelled writer left goes out, under the level and category
// it had set.
void VornLogging::timerElapsed()
{
    endrecord();
    logLibraryRecord(kAllCategoriesLevel,
                     "VornLogging::timerElapsed: called (NOTE: This message only appears and repeats when LogLevel = 9)");
}

// ---------------------------------------------------------------------------
// Records
//
// Every operation a writer calls holds kills back while it changes the
// record (thread/KillDeferral.h): a writer killed in a record leaves the
// lock to the recovery of its critical sections, and the text, levels and
// quiet timer whole, for the timer to finish.

bool VornLogging::getLogAccess()
{
    return withKillsDeferred([this] { return grantItem(); });
}

bool VornLogging::grantItem()
{
    m_lock.lock();
    if (m_logLevel < m_currentLevel) {
        m_lock.unlock();
        return false;
    }
    startQuietTimer();
    return true;
}

void VornLogging::endrecord()
{
    withKillsDeferred([this] {
        if (!m_lock.testAndSet()) {
            return;
        }
        int level = m_logLevel;
        stopQuietTimer();
        if (!m_category.empty()) {
            const auto found = m_categoryLevels.find(m_category);
            if (found != m_categoryLevels.end()) {
                level = found->second;
            }
        }
        // A refused record keeps its text for the next one that goes out.
        if (level >= m_currentLevel || m_currentLevel == 0) {
            writeRecord(m_category.empty() ? std::string("Global") : m_category);
        }
        m_currentLevel = kAllCategoriesLevel;
        m_category.clear();
        m_lock.unwind();
    });
}

// Each thread builds its lines in a buffer of its own, which keeps its
// size from one record to the next. A kill waits for the write to return.
void VornLogging::writeRecord(const std::string& category)
{
    const std::string_view text = RecordText::of(m_stream);
    if (text.empty()) {
        return;
    }
    thread_local std::string line;
    line.clear();
    if (m_bPrefix && m_currentLevel != 0) {
        appendPrefix(line, m_currentLevel, category);
    }
    // The text ends at its first NUL, as a C string would.
    line.append(text.substr(0, text.find('\0')));
    line += '\n';
    m_stream.str(std::string());
    const KillsOff whileWriting;
    if ((m_target & TargetFile) != 0 && m_pFile != nullptr) {
        writeLine(m_pFile, line);
    }
    if ((m_target & TargetStdout) != 0) {
        writeLine(stdout, line);
    }
}

// ---------------------------------------------------------------------------
// Items

void VornLogging::appendText(const char* text, std::size_t length)
{
    m_stream.write(text, static_cast<std::streamsize>(length));
}

template <class T>
VornLogging& VornLogging::appendFormatted(const char* format, T value)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            std::snprintf(g_szLogBuf, sizeof g_szLogBuf, format, value);
            appendText(g_szLogBuf, std::strlen(g_szLogBuf));
        }
    });
    return *this;
}

VornLogging& VornLogging::operator<<(bool value)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            m_stream << (value ? "true" : "false");
        }
    });
    return *this;
}

VornLogging& VornLogging::operator<<(char value)
{
    return appendFormatted("%c", value);
}

VornLogging& VornLogging::operator<<(short value)
{
    return appendFormatted("%d", static_cast<int>(value));
}

VornLogging& VornLogging::operator<<(unsigned short value)
{
    return appendFormatted("%u", static_cast<unsigned int>(value));
}

VornLogging& VornLogging::operator<<(int value)
{
    return appendFormatted("%d", value);
}

VornLogging& VornLogging::operator<<(unsigned int value)
{
    return appendFormatted("%u", value);
}

VornLogging& VornLogging::operator<<(long value)
{
    return appendFormatted("%ld", value);
}

VornLogging& VornLogging::operator<<(unsigned long value)
{
    return appendFormatted("%lu", value);
}

VornLogging& VornLogging::operator<<(float value)
{
    return appendFormatted("%f", static_cast<double>(value));
}

VornLogging& VornLogging::operator<<(double value)
{
    return appendFormatted("%f", value);
}

VornLogging& VornLogging::operator<<(const void* value)
{
    return appendFormatted("%p", value);
}

VornLogging& VornLogging::operator<<(const char* text)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            if (text == nullptr) {
                m_stream.setstate(std::ios::badbit);
            } else {
                appendText(text, std::strlen(text));
            }
        }
    });
    return *this;
}

VornLogging& VornLogging::operator<<(const std::string& text)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            appendText(text.data(), text.size());
        }
    });
    return *this;
}

VornLogging& VornLogging::operator<<(const ci_string& text)
{
    withKillsDeferred([&] { *this << std::string(text.data(), text.size()); });
    return *this;
}

VornLogging& VornLogging::operator<<(const std::wstring& text)
{
    withKillsDeferred([&] { *this << VornStringUtilities::narrow(text, VornLocaleFactory::getDefaultLocale(true)); });
    return *this;
}

VornLogging& VornLogging::operator<<(const ci_wstring& text)
{
    withKillsDeferred([&] { *this << std::wstring(text.c_str()); });
    return *this;
}

VornLogging& VornLogging::operator<<(VornLogging& (*manipulator)(VornLogging&))
{
    return manipulator(*this);
}

// ---------------------------------------------------------------------------
// Manipulators

VornSetLogLevelManipulator::VornSetLogLevelManipulator(Function function, int level)
    : m_function(function), m_level(level)
{
}

VornSetLogLevelManipulator::VornSetLogLevelManipulator(Function function, const std::string& category, int level)
    : m_function(function), m_category(category), m_level(level)
{
}

VornSetLogLevelManipulator::VornSetLogLevelManipulator(const VornSetLogLevelManipulator& other) = default;

VornSetLogLevelManipulator::~VornSetLogLevelManipulator() = default;

VornSetLogLevelManipulator setloglevel(int level)
{
    return VornSetLogLevelManipulator(__setloglevel, level);
}

VornSetLogLevelManipulator setloglevel(const std::string& category, int level)
{
    return VornSetLogLevelManipulator(__setloglevel, category, level);
}

VornLogging& __setloglevel(VornLogging& logger, const std::string& category, int level)
{
    logger.setCurrentLevel(category, level);
    return logger;
}

VornLogging& operator<<(VornLogging& logger, const VornSetLogLevelManipulator& manipulator)
{
    return manipulator.m_function(logger, manipulator.m_category, manipulator.m_level);
}

VornLogging& endrecord(VornLogging& logger)
{
    logger.endrecord();
    return logger;
}

}  // namespace VornSupport
