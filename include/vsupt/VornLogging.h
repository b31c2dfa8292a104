/// @class VornSupport::VornLogging
/// The library's logger.
///
/// A program makes one VornLogging, installs it with setInstance, and from
/// then on the library and the program write records to it in stream style:
///
/// @code
///     if (VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() >= 5) {
///         *VornLogging::getInstance() << setloglevel("net", 5) << "sent " << bytes << endrecord;
///     }
/// @endcode
///
/// The guard costs a disabled call site one load and a compare. A record
/// holds the logger's lock (m_lock) from its first granted item to endrecord,
/// one recursion level per item, so records of different threads never mix;
/// endrecord never waits. The logger's own level decides whether items are
/// taken at all; a category's level can only narrow that at the end of the
/// record, and the text of a refused record stays in the stream and goes out
/// in front of the next record that is written. Finished records are lines
/// of the form "YYYYMMDD_HH:MM:SS level category [thread] text", written to
/// the targets chosen by bits: 1 the log file, 2 stdout.
///
/// Target bit 1 writes to a file named after the configured name: its
/// extension cut, a number from rand() and ".log" appended. The file is
/// opened by the constructor and by setTarget, which cut it to nothing, and
/// closed by setTarget and the destructor. Each record is appended to its
/// end by one write(2), so that a file cut under the logger (log rotation by
/// copy and truncate) goes on from its new end without a hole, and a child
/// of the process writes to it safely as well. reopenLogFile opens the same
/// path again without cutting it, for a service that rotates by renaming
/// and is told so (typically by SIGHUP, relayed out of the handler). A
/// target that stops taking records (a full disk) is told on stderr at the
/// first failed record, and again when it takes records again, with the
/// number lost between.
///
/// A quiet timer watches open records: it starts with the first granted item
/// of a record and stops at endrecord. If a writer was cancelled inside a
/// record, its lock was freed but its text left behind; when the timer has
/// run for 60 seconds, a short-lived thread finishes that record. The timer
/// itself never touches m_lock, so that m_lock and the timer manager's locks
/// are never taken in opposite orders. A record in steady state costs its
/// write and nothing else: cancelTimer marks the timer cancelled and leaves
/// it queued rather than stopping it, so that a record needs no lock of the
/// timer list, and resetTimer leaves a timer queued for the very second a
/// restart would give it. An expiry that finds no record open only stops
/// the timer, which no client can tell from a timer stopped at endrecord.
///
/// A writer killed in a record dies at the end of the call it was in
/// (setloglevel, an item, endrecord) or in the write itself, never in the
/// middle of the logger's bookkeeping: each call holds kills back while it
/// works. The recovery of its critical sections frees m_lock, and the quiet timer finishes the
/// record. A line whose write was cut short is not written again.
///
/// setInstance, setTarget, setLogLevel and getLogLevel take no lock: a
/// program calls them at quiet moments, at start-up above all. A logger is
/// destroyed at a quiet moment too: the thread that finishes a record keeps a
/// plain pointer to it.
#ifndef VSUPT_VORNLOGGING_H
#define VSUPT_VORNLOGGING_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornSetLogLevelManipulator.h>
#include <vsupt/VornTimer.h>
#include <vsupt/char_traits_ci.h>

#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

namespace VornSupport {

class VSUPT_API VornLogging : private VornDependent {
public:
    /// Target bits.
    enum {
        TargetFile = 1,   ///< The log file.
        TargetStdout = 2  ///< stdout.
    };

    /// Target stdout, logging off (level -1), file name "log".
    VornLogging();
    /// A logger writing to the targets whose bits target has, at level; with
    /// bit 1 the file named after fileName is opened.
    VornLogging(const std::string& fileName, int target, int level);
    /// Finishes no record: text still in the stream is lost.
    ~VornLogging() override;

    /// An expiry of the quiet timer: stops the timer if it was cancelled,
    /// and otherwise starts a thread that calls timerElapsed.
    void handleNotification(VornCollaborator& source, const VornNotification& notification) override;

    VornLogging(const VornLogging&) = delete;
    VornLogging& operator=(const VornLogging&) = delete;

    /// Installs the process-wide logger; the logger is not owned.
    static void setInstance(VornLogging& logger);
    /// The installed logger, or null.
    static VornLogging* getInstance() { return m_pInstance; }
    /// A logger is installed and its level is 0 or more.
    static bool isAccessAllowed() { return m_pInstance != nullptr && m_pInstance->m_logLevel >= 0; }

    /// Chooses the targets by bits, closing or opening the file as bit 1
    /// goes or comes.
    void setTarget(int target);
    /// The target bits.
    int getTarget() const;
    /// Sets a category's level. Levels outside -1 to 9 are ignored.
    void setLogLevel(const std::string& category, int level);
    /// The category's level, or the logger's if the category has none.
    int getLogLevel(const std::string& category) const;
    /// The logger's own level.
    int getLogLevel() const { return m_logLevel; }
    /// Sets the level of the record being written, in no category.
    void setCurrentLevel(int level);
    /// Sets the level and category of the record being written. Levels
    /// below -1 are ignored; there is no upper limit.
    void setCurrentLevel(const std::string& category, int level);

    /// Appends "true" or "false".
    VornLogging& operator<<(bool value);
    /// Appends the character.
    VornLogging& operator<<(char value);
    /// Appends the number in decimal.
    VornLogging& operator<<(short value);
    /// Appends the number in decimal.
    VornLogging& operator<<(unsigned short value);
    /// Appends the number in decimal.
    VornLogging& operator<<(int value);
    /// Appends the number in decimal.
    VornLogging& operator<<(unsigned int value);
    /// Appends the number in decimal.
    VornLogging& operator<<(long value);
    /// Appends the number in decimal.
    VornLogging& operator<<(unsigned long value);
    /// Appends the number as printf's `%f` writes it.
    VornLogging& operator<<(float value);
    /// Appends the number as printf's `%f` writes it.
    VornLogging& operator<<(double value);
    /// Appends the address as printf's `%p` writes it.
    VornLogging& operator<<(const void* value);
    /// Appends the text. A null pointer spoils the stream: every later item
    /// is lost.
    VornLogging& operator<<(const char* text);
    /// Appends the text.
    VornLogging& operator<<(const std::string& text);
    /// Appends the text.
    VornLogging& operator<<(const ci_string& text);
    /// Appends the text as narrow text.
    VornLogging& operator<<(const std::wstring& text);
    /// Appends the text as narrow text.
    VornLogging& operator<<(const ci_wstring& text);
    /// Applies a manipulator such as endrecord.
    VornLogging& operator<<(VornLogging& (*manipulator)(VornLogging&));

    /// Takes one level of m_lock for an item, or refuses it (and keeps no
    /// lock) when the record's level is above the logger's.
    bool getLogAccess();
    /// Writes the record if its category lets it through and gives back every
    /// level of m_lock. Does nothing if another thread is inside a record.
    void endrecord();

    /// Opens the file if the target has bit 1.
    virtual void startLogging();
    /// Closes the file if the target has bit 1 and newTarget has not.
    virtual void stopLogging(int newTarget);
    /// Opens the file unless it is open. A failure is told on stderr, and the
    /// logger goes on without a file.
    void openLogFile();
    /// Opens the path of the file opened last once more, for appending, and
    /// writes the following records there; the file open until then is
    /// closed. False, with the reason on stderr, when the target has no file
    /// bit or the path cannot be opened: the records then go on to the file
    /// open until then. Waits for a record being written to end.
    bool reopenLogFile();
    /// Marks the quiet timer cancelled; its next expiry stops it.
    void cancelTimer();
    /// Starts the quiet timer, unless it runs already for the open record.
    void resetTimer();
    /// Finishes the record of a writer that was cancelled inside it.
    void timerElapsed();

private:
    // The bodies of getLogAccess, resetTimer and cancelTimer, for callers
    // that already hold kills back.
    bool grantItem();
    void startQuietTimer();
    void stopQuietTimer();
    void appendText(const char* text, std::size_t length);
    template <class T>
    VornLogging& appendInteger(T value);
    template <class T>
    VornLogging& appendFormatted(const char* format, T value);
    void writeRecord(const std::string& category);
    // Appends to line the line a record of text at level writes, "\n" included.
    void formatLine(std::string& line, int level, const std::string& category, std::string_view text) const;
    void writeToFile(const std::string& line);
    void writeToStdout(const std::string& line);

    // Formats records on behalf of the child of a fork.
    friend class ForkedChildRecords;

    int m_target;
    int m_logLevel;
    std::string m_category;
    int m_currentLevel;
    std::ostringstream m_stream;
    FILE* m_pFile;
    VornCriticalSectionObject m_lock;
    VornTimer m_timer;
    std::map<std::string, int> m_categoryLevels;
    std::string m_fileName;
    bool m_bPrefix;
    bool m_bTimerCancelled;
    // The file opened last, as an absolute path: a daemon changes its
    // directory after the logger opened its file.
    std::string m_filePath;
    // Records a target did not take since it last took one; guarded by
    // m_lock, as the record path is.
    unsigned long m_lostFileRecords;
    unsigned long m_lostStdoutRecords;

    static VornLogging* m_pInstance;
};

/// An item that sets the record's level, in no category.
VSUPT_API VornSetLogLevelManipulator setloglevel(int level);
/// An item that sets the record's category and level.
VSUPT_API VornSetLogLevelManipulator setloglevel(const std::string& category, int level);
/// What setloglevel's item does: logger.setCurrentLevel(category, level).
VSUPT_API VornLogging& __setloglevel(VornLogging& logger, const std::string& category, int level);
/// Applies a setloglevel item.
VSUPT_API VornLogging& operator<<(VornLogging& logger, const VornSetLogLevelManipulator& manipulator);
/// Ends the record, as logger.endrecord().
VSUPT_API VornLogging& endrecord(VornLogging& logger);

}  // namespace VornSupport

#endif
