#include <vsupt/VornFindFile.h>

#include <unistd.h>

namespace VornSupport {

namespace {

const char kSeparators[] = "/\\";

std::string currentDirectory()
{
    char buffer[4096];
    return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string(".");
}

}  // namespace

// ---------------------------------------------------------------------------
// FindFileBase

FindFileBase::FindFileBase(const std::string& fileSpec) : m_fileSpec(fileSpec), m_done(true)
{
    const std::size_t separator = fileSpec.find_last_of(kSeparators);
    if (separator == std::string::npos) {
        m_pattern = fileSpec;
        return;
    }
    m_directory = fileSpec.substr(0, separator);
    m_pattern = fileSpec.substr(separator + 1);
    if (m_pattern.empty()) {
        m_pattern = "*";
    }
}

FindFileBase::~FindFileBase() = default;

bool FindFileBase::hasMore()
{
    return !m_done;
}

// ---------------------------------------------------------------------------
// FindFileImplementation

FindFileImplementation::FindFileImplementation(const std::string& fileSpec)
    : FindFileBase(fileSpec), m_dir(nullptr), m_entry(nullptr)
{
    m_dir = opendir(m_directory.empty() ? currentDirectory().c_str() : m_directory.c_str());
    advance();
}

FindFileImplementation::~FindFileImplementation()
{
    if (m_dir != nullptr) {
        closedir(m_dir);
    }
}

std::string FindFileImplementation::next()
{
    if (m_done) {
        return std::string();
    }
    std::string result = m_directory.empty() ? std::string() : m_directory + "/";
    result += m_entry->d_name;
    advance();
    return result;
}

void FindFileImplementation::advance()
{
    m_entry = nullptr;
    if (m_dir != nullptr) {
        const bool everything = m_pattern == "*";
        while ((m_entry = readdir(m_dir)) != nullptr) {
            if (everything || IsPatternMatch(m_pattern.c_str(), m_entry->d_name)) {
                break;
            }
        }
    }
    m_done = m_entry == nullptr;
}

// A star first tries to match nothing; on a later mismatch the walk returns
// to the latest star and lets it take one more character. Going back to the
// latest star only is enough: whatever an earlier star could take instead,
// the latest one can take as well. So the test stays linear in practice,
// where trying every split at every star would grow with the power of the
// number of stars.
bool FindFileImplementation::IsPatternMatch(const char* pattern, const char* name)
{
    const char* star = nullptr;
    const char* starName = nullptr;
    while (*name != '\0') {
        if (*pattern == '*') {
            star = pattern++;
            starName = name;
        } else if (*pattern != '\0' && (*pattern == '?' || *pattern == *name)) {
            ++pattern;
            ++name;
        } else if (star != nullptr) {
            pattern = star + 1;
            name = ++starName;
        } else {
            return false;
        }
    }
    while (*pattern == '*') {
        ++pattern;
    }
    return *pattern == '\0';
}

// ---------------------------------------------------------------------------
// VornFindFile

VornFindFile::VornFindFile(const std::string& fileSpec) : m_implementation(new FindFileImplementation(fileSpec)) {}

VornFindFile::~VornFindFile() = default;

bool VornFindFile::hasMore()
{
    return m_implementation != nullptr && m_implementation->hasMore();
}

std::string VornFindFile::next()
{
    return m_implementation != nullptr ? m_implementation->next() : std::string();
}

}  // namespace VornSupport
