// Frame and objects: the library started itself when the program loaded it.
// A counted object lives as long as a smart pointer holds it, the object
// factory makes objects by name, and an exception gathers messages on its
// way up. Prints what happens and exits 0 when all went as shown.
#include <vsupt/VornException.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornObjectFactory.h>
#include <vsupt/VornSmartPointer.h>
#include <vsupt/VornStringUtilities.h>
#include <vsupt/VsuptVersion.h>

#include <cstdio>
#include <cstring>

using namespace VornSupport;

int g_destroyed = 0;

// In the global namespace, so that its class name is plain "Connection".
class Connection : public VornObjectBase {
public:
    ~Connection() override { ++g_destroyed; }
};

namespace {

VornObjectBase* makeConnection()
{
    return new Connection;
}

void openDatabase()
{
    try {
        throw VornException("disk full", 0);
    } catch (VornException& e) {
        e.pushMessage(L"openDatabase: cannot write the journal");
        throw;
    }
}

}  // namespace

int main()
{
    std::printf("headers %s, library %s\n", VSUPT_VERSION, VsuptVersion());

    {
        VornSmartPointer<Connection> first(new Connection);
        VornSmartPointer<Connection> second = first;
        std::printf("two smart pointers: count %ld\n", first->refCount());
    }
    std::printf("both gone: %d object destroyed\n", g_destroyed);

    VornObjectFactory* factory = VornObjectFactory::getGlobalInstance();
    factory->add("Connection", makeConnection);
    VornSmartPointer<VornObjectBase> made = factory->construct("Connection");
    std::printf("made by name: %s\n", made->getClassName().c_str());

    try {
        openDatabase();
    } catch (const VornException& e) {
        std::printf("caught \"%s\" with %zu message(s)\n", e.getText().c_str(), e.getCallStack().size());
    }
    return g_destroyed == 1 && std::strcmp(VsuptVersion(), VSUPT_VERSION) == 0 ? 0 : 1;
}
