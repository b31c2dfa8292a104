/// @class VornSupport::VornObjectBase
/// Root of the reference-counted classes.
///
/// A VornObjectBase starts with a count of 0 and is owned by nobody until the
/// first addRef, normally taken by a VornSmartPointer. The last release
/// destroys the object through its virtual destructor. Every count in the
/// library is guarded by the one library-wide section g_pCriticalSection,
/// which exists from the attach sequence to the detach sequence of the
/// library; counting outside that span is not allowed. The destructor of a
/// counted object never runs under that section. addRef and release may run
/// on several threads; refCount reads without the lock.
#ifndef VSUPT_VORNOBJECTBASE_H
#define VSUPT_VORNOBJECTBASE_H

#include <vsupt/VsuptExport.h>

#include <atomic>
#include <string>

namespace VornSupport {

class VornCriticalSectionObject;

/// Guards every reference count and the first use of every other section.
extern VSUPT_API VornCriticalSectionObject* g_pCriticalSection;

class VSUPT_API VornObjectBase {
public:
    VornObjectBase();
    /// A copy is a new object: it starts uncounted.
    VornObjectBase(const VornObjectBase&);
    /// Gives the target the count of a fresh object (0), whoever holds it.
    VornObjectBase& operator=(const VornObjectBase& other);
    virtual ~VornObjectBase();

    /// Adds one to the count under the library-wide section; returns the new count.
    virtual long addRef();
    /// Returns the new count; 0 when the object was destroyed.
    virtual long release();
    /// The count, read without the lock.
    virtual long refCount() const;
    /// Exact match against the normalised name of the most derived class.
    virtual bool isA(const std::string& name) const;
    /// The normalised name of the most derived class.
    virtual std::string getClassName() const;

    /// Turns a type name from run-time type information into the library's
    /// class name form; see the class name tests for worked results.
    static std::string normalizeClassName(const std::string& typeName);

protected:
    /// Changed only under g_pCriticalSection (or by LockBase, which counts
    /// without a lock); atomic so that refCount may read it at any time.
    std::atomic<long> m_nRefCount;

private:
    /// Deletes the object when the count has come to 0.
    long releaseCounted(long count);
};

}  // namespace VornSupport

#endif
