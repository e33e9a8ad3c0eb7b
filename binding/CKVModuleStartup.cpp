#include "binding/CKVModuleStartup.h"

#include "binding/CKVRegCallbackFunction.h"
#include "binding/CKVRenderContextImp.h"
#include "binding/CKVRenderContextRegistry.h"
#include "binding/CKVRenderContextX11Imp.h"
#include "binding/KVRenderCommandDispatchFactory.h"
#include "fbx/CKVFBXAnimationImp.h"
#include "fbx/ReaderWriterFBX.h"
#include "viewer/CKVAxisHandle.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRenderCallback.h"

#include <osgDB/Registry>

namespace Kelvor {

namespace {

// Zero-initialised before any code of the library runs.
bool gStaticallyInitialised = false;

// Storage for the registration whose own destructor does nothing: the
// library's finaliser releases the registration. In a program that links the
// backend's objects directly (the tests, the viewer), static destructors run
// before the finaliser, and a holder destroyed there would leave the
// finaliser a dead object to release.
union RegistrationHolder
{
    RegistrationHolder() : object() {}
    ~RegistrationHolder() {}
    kv_shared_ptr<CKVRegCallbackFunction> object;
};

// Function-local, so that it exists whenever the load entry runs.
kv_shared_ptr<CKVRegCallbackFunction>& registration()
{
    static RegistrationHolder holder;
    return holder.object;
}

} // namespace

void CKVModuleStartup::registerFbxReaderWriter()
{
    ReaderWriterFBX::registerWithRegistry();
}

void CKVModuleStartup::registerImageReaderWriters()
{
    osgDB::Registry* registry = osgDB::Registry::instance();
    // Loading the plugin registers its reader-writer through the plugin's
    // own proxy, as a statically linked one would; a second load is a no-op.
    for (char const* extension : {"jpeg", "png"})
        registry->loadLibrary(registry->createLibraryNameForExtension(extension));
}

void CKVModuleStartup::staticInitialise()
{
    if (gStaticallyInitialised)
        return;
    gStaticallyInitialised = true;
    CKVFBXAnimationImp::desc();
    registerFbxReaderWriter();
    registerImageReaderWriters();
    // The other classes' records come with them as they land.
    initRenderCommandDispatchRecords();
    CKVAxisHandle::desc();
    CKVRenderContextImp::desc();
    CKVRenderContextX11Imp::desc();
    CKVRenderContextRegistry::install();
}

void CKVModuleStartup::load()
{
    if (!registration().valid())
        registration() = new CKVRegCallbackFunction;
}

void CKVModuleStartup::unload()
{
    registration() = nullptr;
}

bool CKVModuleStartup::isLoaded()
{
    return registration().valid();
}

} // namespace Kelvor

bool initOSGApplication()
{
    return Kelvor::CKVRenderCallback::regCreateRenderContext(nullptr);
}

namespace {

// ELF has no separate load entry: both phases run from the library's
// initialiser, static initialisation first, whatever order the linker gave
// the C++ initialisers of the other files. The finaliser runs before the
// library's exit handlers, so the factories go before the contexts do.
__attribute__((constructor)) void kvModuleLoad()
{
    Kelvor::CKVModuleStartup::staticInitialise();
    Kelvor::CKVModuleStartup::load();
}

__attribute__((destructor)) void kvModuleUnload()
{
    Kelvor::CKVModuleStartup::unload();
}

} // namespace
