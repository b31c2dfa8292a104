/// @class VornSupport::VornFindFile
/// Lists the entries of one directory whose names match a wildcard pattern.
///
/// fileSpec is a directory, a separator ("/" or `\`) and a pattern,
/// or a pattern alone for the current directory; an empty pattern is "*". In
/// a pattern "*" stands for any run of characters, "?" for exactly one, and
/// every other character for itself, case counting; the whole name must
/// match. Entries come in the system's order, "." and ".." and directories
/// included, without descending. Each result is the directory part, "/" and
/// the name, or the bare name when the directory part is empty (as it is for
/// "/x*": only the last separator splits). A directory that can't be read
/// gives no results.
///
/// @code
/// VornFindFile find("logs/*.log");
/// while (find.hasMore()) {
///     const std::string path = find.next();
/// }
/// @endcode
///
/// The search owns its directory stream and closes it when it goes. An
/// object is for one thread at a time; there is no lock and no signal.
#ifndef VSUPT_VORNFINDFILE_H
#define VSUPT_VORNFINDFILE_H

#include <vsupt/VsuptExport.h>

#include <dirent.h>

#include <memory>
#include <string>

namespace VornSupport {

/// The search behind VornFindFile: what a platform's implementation shares.
class VSUPT_API FindFileBase {
public:
    /// Splits fileSpec into the directory and the pattern.
    explicit FindFileBase(const std::string& fileSpec);
    FindFileBase(const FindFileBase&) = delete;
    FindFileBase& operator=(const FindFileBase&) = delete;
    virtual ~FindFileBase();

    /// Whether a match is left.
    virtual bool hasMore();
    /// The current match, then on to the following one; empty when none is
    /// left.
    virtual std::string next() = 0;

protected:
    /// The specification as given.
    std::string m_fileSpec;
    /// Without its final separator.
    std::string m_directory;
    /// The pattern, "*" when empty.
    std::string m_pattern;
    /// True when no match is left.
    bool m_done;
};

/// The search over a directory stream.
class VSUPT_API FindFileImplementation : public FindFileBase {
public:
    /// Opens the directory and reads on to the first match.
    explicit FindFileImplementation(const std::string& fileSpec);
    ~FindFileImplementation() override;

    std::string next() override;

    /// Whether name matches pattern as a whole, "*" and "?" as wildcards, case counting.
    static bool IsPatternMatch(const char* pattern, const char* name);

private:
    /// Reads on to the next match, or to the end of the stream.
    void advance();

    DIR* m_dir;
    /// Lives in the stream until the next read.
    dirent* m_entry;
};

class VSUPT_API VornFindFile {
public:
    /// A search for fileSpec: a directory, a separator and a pattern, or a pattern alone.
    explicit VornFindFile(const std::string& fileSpec);
    VornFindFile(const VornFindFile&) = delete;
    VornFindFile& operator=(const VornFindFile&) = delete;
    ~VornFindFile();

    /// Whether a match is left.
    bool hasMore();
    /// The current match, then on to the following one; empty when none is left.
    std::string next();

private:
    std::unique_ptr<FindFileBase> m_implementation;
};

}  // namespace VornSupport

#endif
