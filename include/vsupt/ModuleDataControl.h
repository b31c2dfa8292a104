/// @class ModuleDataControl
/// A start request that lasts as long as the object: the constructor calls
/// ModuleData::entry and the destructor ModuleData::exit. While the library is
/// loaded its modules are up already, so this only raises and lowers counts.
#ifndef VSUPT_MODULEDATACONTROL_H
#define VSUPT_MODULEDATACONTROL_H

#include <vsupt/VsuptExport.h>

class VSUPT_API ModuleDataControl {
public:
    ModuleDataControl();
    virtual ~ModuleDataControl();

    ModuleDataControl(const ModuleDataControl&) = delete;
    ModuleDataControl& operator=(const ModuleDataControl&) = delete;
};

#endif
