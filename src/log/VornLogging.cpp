#include <vsupt/VornLogging.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornDateTime.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include "log/LibraryLog.h"
#include "log/VornLoggingEventTimerThread.h"
#include "os/WriteWhole.h"
#include "thread/KillDeferral.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

namespace VornSupport {

namespace {

// Number items are printed into a buffer on the writer's stack, bounded by
// this size. The longest item, a double printed with "%f", takes 317
// characters. A stack buffer, not a thread-local one, keeps the library's
// thread-local data small enough to load it after start-up.
const std::size_t kNumberItemSize = 512;

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

// ---------------------------------------------------------------------------
// Platform calls of the file target

// A relative name is taken from the current directory now.
std::string absolutePath(const std::string& name)
{
    char directory[4096];
    if (name.empty() || name[0] == '/' || getcwd(directory, sizeof directory) == nullptr) {
        return name;
    }
    return std::string(directory) + "/" + name;
}

// For appending, as fopen(name, "a") would, but not inherited by programs
// the process executes; cutFirst cuts an existing file to nothing. Null,
// with errno set, on failure.
FILE* openForAppending(const std::string& name, bool cutFirst)
{
    const int descriptor =
        open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | (cutFirst ? O_TRUNC : 0), 0666);
    if (descriptor < 0) {
        return nullptr;
    }
    FILE* file = fdopen(descriptor, "a");
    if (file == nullptr) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return file;
}

void reportCannotOpen(const std::string& name, int error)
{
    std::fprintf(stderr, "VornLogging: Cannot open log file %s (%d)\n", name.c_str(), error);
}

// The first record a target refuses after taking one is told on stderr,
// and so is the first one it takes again, with the count lost between. The
// target is named by its kind and its path, if it has one.
void noteWrite(bool written, const char* kind, const std::string& path, unsigned long& lost)
{
    if (!written) {
        if (lost++ == 0) {
            std::fprintf(stderr, "VornLogging: Cannot write to %s%s (%d)\n", kind, path.c_str(), errno);
        }
    } else if (lost != 0) {
        std::fprintf(stderr, "VornLogging: Writing to %s%s again (records lost: %lu)\n", kind, path.c_str(), lost);
        lost = 0;
    }
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
      m_bTimerCancelled(true),
      m_lostFileRecords(0),
      m_lostStdoutRecords(0)
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
    m_filePath = absolutePath(name);
    m_pFile = openForAppending(name, true);
    if (m_pFile == nullptr) {
        reportCannotOpen(name, errno);
    }
}

// The new file is swapped in between two records; the old one is closed
// after, outside the lock.
bool VornLogging::reopenLogFile()
{
    if ((m_target & TargetFile) == 0 || m_filePath.empty()) {
        return false;
    }
    FILE* file = openForAppending(m_filePath, false);
    if (file == nullptr) {
        reportCannotOpen(m_filePath, errno);
        return false;
    }
    FILE* previous;
    {
        VornCriticalSection guard(m_lock, true);
        previous = m_pFile;
        m_pFile = file;
    }
    if (previous != nullptr) {
        std::fclose(previous);
    }
    return true;
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
// size from one record to the next. A kill waits for the writes to return.
void VornLogging::writeRecord(const std::string& category)
{
    const std::string_view text = RecordText::of(m_stream);
    if (text.empty()) {
        return;
    }
    thread_local std::string line;
    line.clear();
    formatLine(line, m_currentLevel, category, text);
    m_stream.str(std::string());
    const KillsOff whileWriting;
    if ((m_target & TargetFile) != 0 && m_pFile != nullptr) {
        writeToFile(line);
    }
    if ((m_target & TargetStdout) != 0) {
        writeToStdout(line);
    }
}

void VornLogging::formatLine(std::string& line, int level, const std::string& category,
                             std::string_view text) const
{
    if (m_bPrefix && level != 0) {
        appendPrefix(line, level, category);
    }
    // The text ends at its first NUL, as a C string would.
    line.append(text.substr(0, text.find('\0')));
    line += '\n';
}

// One write(2) at the end of the file: nothing is buffered, so the record
// is in the file when endrecord returns.
void VornLogging::writeToFile(const std::string& line)
{
    const bool written = writeWhole(fileno(m_pFile), line.data(), line.size());
    noteWrite(written, "log file ", m_filePath, m_lostFileRecords);
}

// Under one hold of the stream's lock, which the program shares: what the
// program left in the stream's buffer goes out first, then the line by
// writeWhole, which no kill can interrupt. A failed flush drops what it
// held, and the line with it, so the next record starts afresh.
void VornLogging::writeToStdout(const std::string& line)
{
    flockfile(stdout);
    const int descriptor = fileno_unlocked(stdout);
    const bool written =
        fflush_unlocked(stdout) == 0 && descriptor >= 0 && writeWhole(descriptor, line.data(), line.size());
    clearerr_unlocked(stdout);
    funlockfile(stdout);
    noteWrite(written, "stdout", std::string(), m_lostStdoutRecords);
}

// ---------------------------------------------------------------------------
// Items

void VornLogging::appendText(const char* text, std::size_t length)
{
    m_stream.write(text, static_cast<std::streamsize>(length));
}

// Whole numbers as printf's "%d" and "%u" write them, without the parsing
// of a format.
template <class T>
VornLogging& VornLogging::appendInteger(T value)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            char digits[24];
            const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
            appendText(digits, static_cast<std::size_t>(end - digits));
        }
    });
    return *this;
}

template <class T>
VornLogging& VornLogging::appendFormatted(const char* format, T value)
{
    withKillsDeferred([&] {
        if (grantItem()) {
            char number[kNumberItemSize];
            std::snprintf(number, sizeof number, format, value);
            appendText(number, std::strlen(number));
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
    return appendInteger(static_cast<int>(value));
}

VornLogging& VornLogging::operator<<(unsigned short value)
{
    return appendInteger(static_cast<unsigned int>(value));
}

VornLogging& VornLogging::operator<<(int value)
{
    return appendInteger(value);
}

VornLogging& VornLogging::operator<<(unsigned int value)
{
    return appendInteger(value);
}

VornLogging& VornLogging::operator<<(long value)
{
    return appendInteger(value);
}

VornLogging& VornLogging::operator<<(unsigned long value)
{
    return appendInteger(value);
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
