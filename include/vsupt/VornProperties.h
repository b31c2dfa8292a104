// An ordered table of named text settings, and its file form.
//
// VornProperties maps a name to one or more text values, in the order they
// were added; the first of them is "the" value of the property. A store made
// with multiple values (the default) appends when a name is added again; one
// made without keeps exactly one value per name and replaces it. Names order
// and compare as the string type does, so a ci_string or ci_wstring store
// treats Name and NAME as one property and keeps the case of the first one
// added. The library provides the four instantiations std::string,
// std::wstring, ci_string and ci_wstring.
//
// The store is counted (VornObjectBase) and a subject (VornCollaborator),
// but it never notifies by itself: whoever wants its dependents to hear of a
// change sends PropertyChanged.
//
// Threads: the reading and writing operations on single names take the
// store's own lock for their whole run and may be used on several threads.
// size, forEach, getProperties, copying from the store, saving, and the
// level-9 dump at the end of a load walk the table without the lock and must
// not run against a writer. A load takes the lock once for each property it
// stores, so another thread may see a half-loaded file.
//
// Property files are lines of name=value: the reader takes plain text or
// UTF-16 little-endian behind the bytes 0xFF 0xFE, skips lines starting with
// "#", splits at the first separator, cuts a value at the line's first CR
// (else its first LF) and drops its leading blanks, and never trims a name.
// A malformed line is never an error. Only regular files are read: a
// device, a FIFO or a directory is a file that cannot be opened, and a line
// longer than maxLineLength characters ends the load with a failure (what
// came before it stays loaded). The writer writes one name=value line per
// name, with the first value only, in ascending name order. Loads and saves
// log at level 5 what they open, and their failures.
//
// A save rewrites the file in place, so that a symbolic link stays a link
// and a hard link keeps its inode; it never leaves less than the old content
// or the new one. The new content is formed in memory first, room for it is
// reserved on the disk before the old content is touched, and it is then
// written in one go rather than flushed line by line: a full disk, or text a
// wide store's locale cannot convert, fails the save and leaves the file as
// it was.
#ifndef VSUPT_VORNPROPERTIES_H
#define VSUPT_VORNPROPERTIES_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCollaborator.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornPropertyIterator.h>
#include <vsupt/VornPropertyNotFound.h>
#include <vsupt/char_traits_ci.h>

#include <map>
#include <string>
#include <vector>

namespace VornSupport {

template <class StringType>
class VSUPT_API VornProperties : public VornObjectBase, public VornCollaborator {
public:
    using CharType = typename StringType::value_type;
    using PropertyMap = std::map<StringType, std::vector<StringType>>;

    // Keeps several values per name.
    VornProperties();
    explicit VornProperties(bool multipleValues);
    // A new object with its own count, lock and no dependents, holding a
    // copy of the table; the source is read without its lock.
    VornProperties(const VornProperties& other);
    // Replaces the table under this store's lock; the source's is not taken.
    VornProperties& operator=(const VornProperties& other);
    ~VornProperties() override;

    // Counts names, not values.
    unsigned long size() const;

    // The first value; throws VornPropertyNotFound, and nothing else, when
    // the name is absent.
    StringType getProperty(const StringType& name) const;
    // The stored first value, or defaultValue itself when the name is absent.
    // The reference lives until that value is replaced or the name removed.
    const StringType& getProperty(const StringType& name, const StringType& defaultValue) const;
    // False, leaving value as it was, when the name is absent.
    bool getPropertyValue(const StringType& name, StringType& value) const;
    // All values in the order they were added; empty when the name is absent.
    std::vector<StringType> getPropertyValues(const StringType& name) const;

    // Replaces the first value only, or adds the property when it is absent.
    void setProperty(const StringType& name, const StringType& value);
    // Appends a value, or replaces the only one in a single-valued store. An
    // empty name is ignored.
    void addProperty(const StringType& name, const StringType& value);
    // An absent name is no error.
    void removeProperty(const StringType& name);

    // Calls iterator.process for each property in ascending name order.
    void forEach(VornPropertyIterator<StringType>& iterator);
    PropertyMap getProperties() const;

    // Lines longer than this end a load with a failure.
    static constexpr unsigned long maxLineLength = 1UL << 20;

    // Adds the properties of a file to the store; throws VornException with
    // the reason when the file can't be opened or read whole.
    bool loadProperties(const std::string& path, CharType separator = '=');
    // False when the file can't be opened or read whole.
    bool loadPropertiesImpl(const std::string& path, CharType separator = '=');
    // The same, with the reason in error.
    bool loadPropertiesImpl(const std::string& path, CharType separator, std::string& error);
    void loadProperties(const CharType** lines, int count, CharType separator = '=');
    void loadProperties(const std::vector<StringType>& lines, CharType separator = '=');
    // Stores what one line of a property file holds.
    void addProperty(const StringType& line, CharType separator);
    // Stores the whole line as a name with an empty value, unless it starts
    // with "#".
    void addPropertyforWSmanDA(const StringType& line);

    // Rewrites the file in place; throws VornException with the reason when
    // it can't be opened or written.
    bool saveProperties(const std::string& path);
    // False when the file can't be opened or written.
    bool savePropertiesImpl(const std::string& path);
    // The same, with the reason in error.
    bool savePropertiesImpl(const std::string& path, std::string& error);

private:
    template <class Name, class Value>
    void insertProperty(Name&& name, Value&& value);

    mutable VornCriticalSectionObject m_lock;
    PropertyMap m_properties;
    bool m_multipleValues;
    StringType m_reserved;  // kept empty
};

extern template class VSUPT_API VornProperties<std::string>;
extern template class VSUPT_API VornProperties<std::wstring>;
extern template class VSUPT_API VornProperties<ci_string>;
extern template class VSUPT_API VornProperties<ci_wstring>;

}  // namespace VornSupport

#endif
