// Loads the backend library the way a host does and checks what its load and
// unload register with the host. Built as its own program that links only
// the host libraries: one that linked the backend, or the libraries it uses,
// could not see it unload.
#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderContext.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickStream/CKVModelIOManager.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

// An object of the backend must be gone before the backend is: its code is.
bool sceneNodeFactoryWorks()
{
    kv_shared_ptr<CKVSceneNode> node = CKVRenderCallback::createSceneNode();
    return node.valid();
}

bool contextFactoriesWork()
{
    CKVRenderContext* context = CKVRenderCallback::createRenderContext(-1);
    if (!context)
        return false;
    return CKVRenderCallback::destroyRenderContext(context) && context == nullptr;
}

// Looked up by key only: no importer object is touched, so this is safe
// after the unload too.
bool importerRegistered(char const* extension)
{
    std::vector<std::string> const keys = CKVModelIOManager::instance()->getExtensions();
    return std::find(keys.begin(), keys.end(), extension) != keys.end();
}

char const* const kTileExtensions[] = {"osgb", ".osgb", "s3c", ".s3c", "lfp", ".lfp"};

// The unload leaves the "lfp" and ".lfp" importer registered, as hosts
// expect, but its code goes with the library: after the unload it must not
// be called, and it must not be destroyed either, since its destructor is
// that code too. A later load replaces the entry and would destroy it, so
// the test keeps a reference of its own that it never gives back, held
// where the leak checker sees it.
std::vector<CKVModelImportExport*>& pinnedImporters()
{
    static auto* pinned = new std::vector<CKVModelImportExport*>;
    return *pinned;
}

void pinLfpImporter()
{
    kv_shared_ptr<CKVModelImportExport> importer = CKVModelIOManager::instance()->findImportExport("lfp");
    pinnedImporters().push_back(importer.detach());
}

// Whether any part of the library file is mapped into the process: the
// loader's own bookkeeping could say "closed" while something keeps the
// file in memory.
bool isMapped()
{
    char resolved[PATH_MAX];
    if (!realpath(TARNWICK_OSG_LIBRARY, resolved))
        return false;
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(resolved) != std::string::npos)
            return true;
    }
    return false;
}

void* load()
{
    return dlopen(TARNWICK_OSG_LIBRARY, RTLD_NOW | RTLD_LOCAL);
}

TEST(ModuleLoadTest, LoadRegistersAndUnloadRemoves)
{
    ASSERT_FALSE(isMapped());
    EXPECT_EQ(CKVRenderCallback::createRenderContext(-1), nullptr);
    EXPECT_EQ(CKVRuntimeClass::find("CKVRenderContextX11Imp"), nullptr);

    void* library = load();
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(isMapped());
    EXPECT_TRUE(contextFactoriesWork());
    EXPECT_NE(CKVRuntimeClass::find("CKVRenderContextX11Imp"), nullptr);
    EXPECT_TRUE(sceneNodeFactoryWorks());
    EXPECT_NE(CKVRuntimeClass::find("CKVRCDispatchAttachSceneData"), nullptr);
    for (char const* extension : kTileExtensions)
        EXPECT_TRUE(importerRegistered(extension)) << extension;

    // The exported entry answers as the host's table does for null.
    using InitFn = bool (*)();
    auto init = reinterpret_cast<InitFn>(dlsym(library, "_Z18initOSGApplicationv"));
    ASSERT_NE(init, nullptr);
    EXPECT_FALSE(init());
    EXPECT_TRUE(contextFactoriesWork());
    // Nothing of the backend's own workings is reachable by name.
    EXPECT_EQ(dlsym(library, "_ZN6Kelvor16CKVModuleStartup6unloadEv"), nullptr);

    // A context the host never destroyed goes with the library.
    ASSERT_NE(CKVRenderCallback::createRenderContext(-1), nullptr);

    pinLfpImporter();
    ASSERT_EQ(dlclose(library), 0);
    // A library marked not to be unloaded (GNU unique symbols do that), or
    // one another library has bound to, would stay mapped and keep its
    // factories registered.
    ASSERT_FALSE(isMapped());
    EXPECT_EQ(CKVRenderCallback::createRenderContext(-1), nullptr);
    EXPECT_FALSE(sceneNodeFactoryWorks());
    EXPECT_EQ(CKVRenderCallback::createRenderCommandDispatch(9), nullptr);
    CKVRenderContext* none = nullptr;
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(none));
    EXPECT_EQ(CKVRuntimeClass::find("CKVRenderContextX11Imp"), nullptr);
    EXPECT_EQ(CKVRuntimeClass::find("CKVRCDispatchAttachSceneData"), nullptr);
    for (char const* extension : {"osgb", ".osgb", "s3c", ".s3c"})
        EXPECT_FALSE(importerRegistered(extension)) << extension;
    EXPECT_TRUE(importerRegistered("lfp"));
    EXPECT_TRUE(importerRegistered(".lfp"));
}

// Each round uses the backend, leaves a context behind for the unload to
// take, and must find the library gone and its factories unregistered
// afterwards: the unload ran, every time.
TEST(ModuleLoadTest, ThreeRoundsEachLoadAndUnloadAfresh)
{
    for (int round = 0; round < 3; ++round) {
        void* library = load();
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_TRUE(contextFactoriesWork()) << "round " << round;
        EXPECT_TRUE(sceneNodeFactoryWorks()) << "round " << round;
        EXPECT_TRUE(importerRegistered(".osgb")) << "round " << round;
        ASSERT_NE(CKVRenderCallback::createRenderContext(-1), nullptr) << "round " << round;
        pinLfpImporter();
        ASSERT_EQ(dlclose(library), 0);
        ASSERT_FALSE(isMapped()) << "round " << round;
        EXPECT_FALSE(importerRegistered(".osgb")) << "round " << round;
        EXPECT_FALSE(sceneNodeFactoryWorks()) << "round " << round;
        EXPECT_EQ(CKVRenderCallback::createRenderContext(-1), nullptr) << "round " << round;
    }
}

} // namespace
} // namespace Kelvor
