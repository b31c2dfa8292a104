/// @class ModuleData
/// One link of the library's list of start-up objects.
///
/// Each ModuleData counts the start requests made on it; ModuleData::entry
/// attaches every object whose count was 0, oldest first, and
/// ModuleData::exit detaches every object whose count falls to 0, newest
/// first. Destruction must come in reverse order of construction: only the
/// head of the list is truly unlinked. The list and the counts are not
/// locked: load, unload and start requests happen on one thread at a time.
#ifndef VSUPT_MODULEDATA_H
#define VSUPT_MODULEDATA_H

#include <vsupt/VsuptExport.h>

#include <cstdint>

class VSUPT_API ModuleData {
public:
    /// With automatic true the derived class attaches from its own
    /// constructor and detaches from its own destructor.
    explicit ModuleData(bool automatic);
    virtual ~ModuleData();

    /// Brings the module up; called by entry() when its count was 0.
    virtual void attach() = 0;
    /// Takes the module down; called by exit() when its count falls to 0.
    virtual void detach() = 0;

    /// Counts one start request on every object, attaching those whose count was 0, oldest first.
    static void entry();
    /// Takes one start request off every object, detaching those whose count falls to 0, newest first.
    static void exit();

    /// True: the derived class attaches from its own constructor and detaches from its own destructor.
    bool m_bAutomatic;
    ModuleData* m_pPrev;  ///< the neighbour constructed later; null at the head
    ModuleData* m_pNext;  ///< the neighbour constructed earlier
    int32_t m_nRefCount;  ///< outstanding start requests

    static ModuleData* m_pHead;  ///< the object constructed last
};

#endif
