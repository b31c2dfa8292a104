#include <vsupt/VornProperties.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornException.h>
#include <vsupt/VornExecuteProgram.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornLogging.h>
#include <vsupt/VornPropertyIteratorFunctor.h>
#include <vsupt/VornSmartPointer.h>

#include "frame/ExceptionBorder.h"
#include "log/LibraryLog.h"
#include "os/WriteWhole.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <fstream>
#include <locale>
#include <type_traits>
#include <utility>

namespace VornSupport {

namespace {

const char* const loadOperation = "VornProperties<StringType>::loadProperties: ";
const char* const saveOperation = "VornProperties<StringType>::saveProperties: ";

std::string couldNotOpen(const char* operation, const std::string& path)
{
    return operation + std::string("couldn't open file ") + path;
}

std::string lineTooLong(const std::string& path, unsigned long limit)
{
    return loadOperation + std::string("line longer than ") + std::to_string(limit) + " characters in file " + path;
}

std::string couldNotWrite(const std::string& path, int errorNumber)
{
    std::string reason;
    VornGetOSErrorMessage(errorNumber, reason);
    return saveOperation + std::string("couldn't write file ") + path + ": " + reason;
}

// Wide files convert with the library's locale, as all its text
// conversions do; for narrow ones the locale changes nothing.
std::locale fileLocale()
{
    return VornLocaleFactory::getDefaultLocale(true);
}

template <class S>
void logContents(const std::map<S, std::vector<S>>& properties)
{
    for (const auto& entry : properties) {
        const S& value = entry.second.front();
        logLibraryRecord(9, "DebugPrintProperty: ", entry.first, "=", value, " (",
                         static_cast<unsigned long>(value.length()), ")");
    }
}

template <class S>
void appendUpToNul(std::basic_string<typename S::value_type>& line, const S& text)
{
    line.append(text.data(), std::min(text.find(typename S::value_type()), text.size()));
}

// One UTF-16 code unit as a character of the store: a narrow store keeps
// the low byte alone.
template <class CharType>
CharType fromCodeUnit(unsigned char low, unsigned char high);

template <>
char fromCodeUnit<char>(unsigned char low, unsigned char)
{
    return static_cast<char>(low);
}

template <>
wchar_t fromCodeUnit<wchar_t>(unsigned char low, unsigned char high)
{
    return static_cast<wchar_t>((high << 8) | low);
}

bool isRegularFile(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Reads the lines of a property file: UTF-16 little-endian behind the mark
// 0xFF 0xFE, else plain text through a stream of the store's character
// type. The mark is looked for among the file's bytes, before a wide
// stream's conversion could reject or merge them, and UTF-16 lines are read
// from the bytes too.
template <class CharType>
class PropertyFileReader {
public:
    using Line = std::basic_string<CharType>;

    explicit PropertyFileReader(unsigned long maxLineLength) : m_maxLineLength(maxLineLength) {}

    // False when the file is no regular file (a FIFO would block, a device
    // never end), can't be opened, or can't be read.
    bool open(const std::string& path)
    {
        if (!isRegularFile(path)) {
            return false;
        }
        m_bytes.open(path, std::ios::in | std::ios::binary);
        if (!m_bytes.is_open() || (m_bytes.peek() == EOF && !m_bytes.eof())) {
            return false;
        }
        skipMark();
        if constexpr (std::is_same_v<CharType, char>) {
            return true;
        } else {
            if (m_utf16 || m_bytes.eof()) {
                return true;
            }
            m_bytes.close();
            m_text.imbue(fileLocale());
            m_text.open(path, std::ios::in | std::ios::binary);
            return m_text.is_open();
        }
    }

    // Also true once a read has failed: a stream error ends the file.
    bool atEnd()
    {
        return m_utf16 ? ended(m_bytes) : ended(textStream());
    }

    // False when the line is longer than the limit.
    bool readLine(Line& line)
    {
        return m_utf16 ? readUtf16Line(line) : readPlainLine(line);
    }

private:
    static constexpr std::size_t initialLineCapacity = 8192;
    static constexpr std::streamsize chunkLength = 1024;

    // std::getline in chunks, so that a line cannot grow past the limit.
    bool readPlainLine(Line& line)
    {
        std::basic_istream<CharType>& in = textStream();
        const CharType lineFeed = in.widen('\n');
        CharType chunk[chunkLength];
        line.clear();
        for (;;) {
            in.getline(chunk, chunkLength, lineFeed);
            // Only the fail state, with a full chunk: the line goes on.
            const bool full = in.rdstate() == std::ios::failbit && in.gcount() == chunkLength - 1;
            const std::streamsize stored = in.good() ? in.gcount() - 1 : in.gcount();
            if (line.size() + static_cast<std::size_t>(stored) > m_maxLineLength) {
                return false;
            }
            line.append(chunk, static_cast<std::size_t>(stored));
            if (!full) {
                return true;
            }
            in.clear();
        }
    }

    template <class C>
    static bool ended(const std::basic_ios<C>& stream)
    {
        return stream.eof() || stream.fail();
    }

    void skipMark()
    {
        if (m_bytes.peek() != 0xFF) {
            return;
        }
        m_bytes.seekg(1);
        if (m_bytes.peek() == 0xFE) {
            m_bytes.seekg(2);
            m_utf16 = true;
        } else {
            m_bytes.seekg(0);
        }
    }

    // A line ends after its LF, which a narrow store sees in the low byte
    // alone; an odd last byte is dropped.
    bool readUtf16Line(Line& line)
    {
        line.clear();
        line.reserve(initialLineCapacity);
        char low;
        char high;
        while (m_bytes.get(low) && m_bytes.get(high)) {
            const CharType c = fromCodeUnit<CharType>(static_cast<unsigned char>(low), static_cast<unsigned char>(high));
            if (c == CharType('\n')) {
                line.push_back(c);
                break;
            }
            if (line.size() == m_maxLineLength) {
                return false;
            }
            line.push_back(c);
        }
        stripLineEnd(line);
        return true;
    }

    static void stripLineEnd(Line& line)
    {
        if (line.empty() || line.back() != CharType('\n')) {
            return;
        }
        line.pop_back();
        if (!line.empty() && line.back() == CharType('\r')) {
            line.pop_back();
        }
    }

    std::basic_istream<CharType>& textStream()
    {
        if constexpr (std::is_same_v<CharType, char>) {
            return m_bytes;
        } else {
            return m_text;
        }
    }

    const unsigned long m_maxLineLength;
    std::ifstream m_bytes;
    std::basic_ifstream<CharType> m_text;  // plain text of a wide store
    bool m_utf16 = false;
};

// ---------------------------------------------------------------------------
// Saving

// The bytes of a narrow store's text are its own.
const std::string* encode(const std::string& text, std::string&)
{
    return &text;
}

// A wide store's text converted by the library's locale, as a wide file
// stream imbued with it would, into converted. Null when a character has
// no form there.
const std::string* encode(const std::wstring& text, std::string& converted)
{
    using Conversion = std::codecvt<wchar_t, char, std::mbstate_t>;
    const std::locale locale = fileLocale();
    const Conversion& conversion = std::use_facet<Conversion>(locale);
    converted.assign(text.size() * static_cast<std::size_t>(std::max(1, conversion.max_length())), '\0');
    std::mbstate_t state{};
    const wchar_t* fromNext = text.data();
    char* toNext = &converted[0];
    if (conversion.out(state, text.data(), text.data() + text.size(), fromNext, &converted[0],
                       &converted[0] + converted.size(), toNext) != std::codecvt_base::ok) {
        return nullptr;
    }
    converted.resize(static_cast<std::size_t>(toNext - &converted[0]));
    return &converted;
}

// For writing without cutting it: the same inode, reached through a
// symbolic link as well. -1, with errno set, on failure.
int openForRewrite(const std::string& path)
{
    return open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
}

// Room for the new content is reserved before the old is touched, so that
// a full disk leaves the old content as it was, and the file is cut to the
// new length only once that is written. 0, or the error number; the file
// is closed in any case.
int rewriteAndClose(int descriptor, const std::string& bytes)
{
    struct stat status;
    const bool regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    int error = 0;
    if (regular && !bytes.empty()) {
        error = posix_fallocate(descriptor, 0, static_cast<off_t>(bytes.size()));
        if (error != 0 && ftruncate(descriptor, status.st_size) != 0) {
            // A failed reservation that grew the file leaves zeros behind the
            // old content, which are no loss.
        }
    }
    if (error == 0 && !writeWhole(descriptor, bytes.data(), bytes.size())) {
        error = errno;
    }
    if (error == 0 && regular && static_cast<off_t>(bytes.size()) < status.st_size &&
        ftruncate(descriptor, static_cast<off_t>(bytes.size())) != 0) {
        error = errno;
    }
    if (close(descriptor) != 0 && error == 0) {
        error = errno;
    }
    return error;
}

template <class S>
S leftTrimmedBlanks(S value)
{
    value.erase(0, std::min(value.find_first_not_of(typename S::value_type(' ')), value.size()));
    return value;
}

}  // namespace

// ---------------------------------------------------------------------------
// The store

template <class S>
VornProperties<S>::VornProperties() : VornProperties(true)
{
}

template <class S>
VornProperties<S>::VornProperties(bool multipleValues) : m_multipleValues(multipleValues)
{
}

template <class S>
VornProperties<S>::VornProperties(const VornProperties& other)
    : VornObjectBase(), VornCollaborator(), m_properties(other.m_properties), m_multipleValues(other.m_multipleValues)
{
}

template <class S>
VornProperties<S>& VornProperties<S>::operator=(const VornProperties& other)
{
    if (this == &other) {
        return *this;
    }
    PropertyMap copy(other.m_properties);
    VornCriticalSection guard(m_lock, true);
    m_properties.swap(copy);
    m_multipleValues = other.m_multipleValues;
    return *this;
}

template <class S>
VornProperties<S>::~VornProperties() = default;

template <class S>
unsigned long VornProperties<S>::size() const
{
    return m_properties.size();
}

template <class S>
S VornProperties<S>::getProperty(const S& name) const
{
    return letOutOnly<VornPropertyNotFound>([&] {
        VornCriticalSection guard(m_lock, true);
        const auto found = m_properties.find(name);
        if (found == m_properties.end()) {
            throw VornPropertyNotFound(name);
        }
        return found->second.front();
    });
}

template <class S>
const S& VornProperties<S>::getProperty(const S& name, const S& defaultValue) const
{
    VornCriticalSection guard(m_lock, true);
    const auto found = m_properties.find(name);
    return found == m_properties.end() ? defaultValue : found->second.front();
}

template <class S>
bool VornProperties<S>::getPropertyValue(const S& name, S& value) const
{
    VornCriticalSection guard(m_lock, true);
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) {
        return false;
    }
    value = found->second.front();
    return true;
}

template <class S>
std::vector<S> VornProperties<S>::getPropertyValues(const S& name) const
{
    VornCriticalSection guard(m_lock, true);
    const auto found = m_properties.find(name);
    return found == m_properties.end() ? std::vector<S>() : found->second;
}

template <class S>
void VornProperties<S>::setProperty(const S& name, const S& value)
{
    VornCriticalSection guard(m_lock, true);
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) {
        addProperty(name, value);
    } else {
        found->second.front() = value;
    }
}

template <class S>
void VornProperties<S>::addProperty(const S& name, const S& value)
{
    insertProperty(name, value);
}

// One search of the table whether the name is new or not; a load hands its
// parsed texts over without copying them.
template <class S>
template <class Name, class Value>
void VornProperties<S>::insertProperty(Name&& name, Value&& value)
{
    if (name.empty()) {
        return;
    }
    VornCriticalSection guard(m_lock, true);
    const auto position = m_properties.lower_bound(name);
    if (position == m_properties.end() || m_properties.key_comp()(name, position->first)) {
        std::vector<S> values;
        values.push_back(std::forward<Value>(value));
        m_properties.emplace_hint(position, std::forward<Name>(name), std::move(values));
    } else if (m_multipleValues) {
        position->second.push_back(std::forward<Value>(value));
    } else {
        position->second.front() = std::forward<Value>(value);
    }
}

template <class S>
void VornProperties<S>::removeProperty(const S& name)
{
    VornCriticalSection guard(m_lock, true);
    m_properties.erase(name);
}

template <class S>
void VornProperties<S>::forEach(VornPropertyIterator<S>& iterator)
{
    std::for_each(m_properties.begin(), m_properties.end(), VornPropertyIteratorFunctor<S>(iterator));
}

template <class S>
typename VornProperties<S>::PropertyMap VornProperties<S>::getProperties() const
{
    return m_properties;
}

// ---------------------------------------------------------------------------
// Lines and files

template <class S>
void VornProperties<S>::addProperty(const S& line, CharType separator)
{
    if (!line.empty() && line[0] == CharType('#')) {
        return;
    }
    const auto split = line.find(separator);
    if (split == S::npos) {
        insertProperty(line, S());
        return;
    }
    auto end = line.find(CharType('\r'));
    if (end == S::npos) {
        end = line.find(CharType('\n'));
    }
    // A line end before the separator does not shorten the value.
    const auto valueLength = end == S::npos || end < split ? S::npos : end - split - 1;
    insertProperty(line.substr(0, split), leftTrimmedBlanks(line.substr(split + 1, valueLength)));
}

template <class S>
void VornProperties<S>::addPropertyforWSmanDA(const S& line)
{
    if (!line.empty() && line[0] == CharType('#')) {
        return;
    }
    insertProperty(line, S());
}

template <class S>
void VornProperties<S>::loadProperties(const CharType** lines, int count, CharType separator)
{
    for (int i = 0; i < count; ++i) {
        addProperty(S(lines[i]), separator);
    }
}

template <class S>
void VornProperties<S>::loadProperties(const std::vector<S>& lines, CharType separator)
{
    for (const S& line : lines) {
        addProperty(line, separator);
    }
}

template <class S>
bool VornProperties<S>::loadProperties(const std::string& path, CharType separator)
{
    std::string error;
    if (!loadPropertiesImpl(path, separator, error)) {
        throw VornException(error, 0);
    }
    return true;
}

template <class S>
bool VornProperties<S>::loadPropertiesImpl(const std::string& path, CharType separator)
{
    std::string error;
    return loadPropertiesImpl(path, separator, error);
}

template <class S>
bool VornProperties<S>::loadPropertiesImpl(const std::string& path, CharType separator, std::string& error)
{
    logLibraryRecord(5, loadOperation, "from file ", path);
    PropertyFileReader<CharType> reader(maxLineLength);
    if (!reader.open(path)) {
        error = couldNotOpen(loadOperation, path);
        logLibraryRecord(5, error);
        return false;
    }
    typename PropertyFileReader<CharType>::Line line;
    while (!reader.atEnd()) {
        if (!reader.readLine(line)) {
            error = lineTooLong(path, maxLineLength);
            logLibraryRecord(5, error);
            return false;
        }
        if constexpr (std::is_same_v<S, decltype(line)>) {
            addProperty(line, separator);
        } else {
            addProperty(S(line.data(), line.size()), separator);
        }
    }
    if (VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() == 9) {
        logContents(m_properties);
    }
    return true;
}

template <class S>
bool VornProperties<S>::saveProperties(const std::string& path)
{
    std::string error;
    if (!savePropertiesImpl(path, error)) {
        throw VornException(error, 0);
    }
    return true;
}

template <class S>
bool VornProperties<S>::savePropertiesImpl(const std::string& path)
{
    std::string error;
    return savePropertiesImpl(path, error);
}

// The whole file is formed, and converted, before the disk is touched.
template <class S>
bool VornProperties<S>::savePropertiesImpl(const std::string& path, std::string& error)
{
    logLibraryRecord(5, saveOperation, "to file ", path);
    std::basic_string<CharType> text;
    for (const auto& entry : m_properties) {
        appendUpToNul(text, entry.first);
        text += CharType('=');
        appendUpToNul(text, entry.second.front());
        text += CharType('\n');
    }
    std::string converted;
    const std::string* bytes = encode(text, converted);
    int errorNumber = EILSEQ;
    if (bytes != nullptr) {
        const int descriptor = openForRewrite(path);
        if (descriptor < 0) {
            error = couldNotOpen(saveOperation, path);
            logLibraryRecord(5, error);
            return false;
        }
        errorNumber = rewriteAndClose(descriptor, *bytes);
    }
    if (errorNumber != 0) {
        error = couldNotWrite(path, errorNumber);
        logLibraryRecord(5, error);
        return false;
    }
    return true;
}

template class VornProperties<std::string>;
template class VornSmartPointer<VornProperties<std::string>>;
template class VornProperties<std::wstring>;
template class VornProperties<ci_string>;
template class VornProperties<ci_wstring>;

}  // namespace VornSupport
