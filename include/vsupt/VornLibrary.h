/// @class VornSupport::VornLibrary
/// One shared object loaded at run time.
///
/// The constructor loads the object with every symbol resolved at once, or
/// throws VornException; the destructor unloads it. With exactName false the
/// name is short: "foo" loads "libfoo.so" from the loader's search path.
/// getProcAddr looks a symbol up and gives null for one that is not there.
///
/// A copy holds the same handle and a load of its own on it, so each object
/// unloads once. An assignment takes the other's name and handle and keeps
/// the load it held before: that library stays in memory. The class takes
/// no lock; the loader's error text belongs to the calling thread, so one
/// object can serve several threads.
#ifndef VSUPT_VORNLIBRARY_H
#define VSUPT_VORNLIBRARY_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectBase.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornLibrary : public VornObjectBase {
public:
    /// Lets out VornException only: "VornLibrary::VornLibrary: failed to
    /// load: " + name + ".  " + the loader's text.
    VornLibrary(const std::string& name, bool exactName);
    /// Copies the handle and the name.
    VornLibrary(const VornLibrary& other);
    /// Copies the handle and the name.
    VornLibrary& operator=(const VornLibrary& other);
    ~VornLibrary() override;

    /// The address of symbol in the loaded object, null when it is not there.
    void* getProcAddr(const std::string& symbol);

private:
    std::string m_name;
    void* m_handle;
};

}  // namespace VornSupport

#endif
