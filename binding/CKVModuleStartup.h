#pragma once

#include "binding/KVBackendExport.h"

namespace Kelvor {

// How the library ties itself to the host. Static initialisation makes the
// render-context factories available; the load step registers everything
// else; unloading takes the load step back. The library's ELF initialiser
// and finaliser run them (the end of CKVModuleStartup.cpp).
class CKVModuleStartup
{
public:
    CKVModuleStartup() = delete;

    // Records, reader-writers, then the context registry and its factories.
    // Runs once; later calls do nothing.
    static void staticInitialise();
    // Creates the registration object that registers the other factories.
    static void load();
    // Releases the registration object, which removes them again.
    static void unload();

    static bool isLoaded();

private:
    // The FBX reader-writer is our own (on assimp); Debian has no FBX
    // plugin to stand in for it.
    static void registerFbxReaderWriter();
    // JPEG and PNG are there before the first file is read, so that captures
    // and textures never wait for a plugin search.
    static void registerImageReaderWriters();
};

} // namespace Kelvor

// Referencing this function makes a host link against the library; the
// factories are registered by the time it can be called. It registers no
// context factory itself: it passes null, which the host refuses.
KV_BACKEND_EXPORT bool initOSGApplication();
