// Loads the backend library the way a host does and checks what its load and
// unload register with the host. Built as its own program: one that linked
// the library could not unload it.
#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderContext.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickStream/CKVModelIOManager.h"

#include <osgDB/Registry>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
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

bool readerWriterPresent(char const* extension)
{
    for (osgDB::ReaderWriter* readerWriter : osgDB::Registry::instance()->getReaderWriterList()) {
        if (readerWriter->acceptsExtension(extension))
            return true;
    }
    return false;
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
// the test keeps a reference of its own that it never gives back.
void pinLfpImporter()
{
    kv_shared_ptr<CKVModelImportExport> importer = CKVModelIOManager::instance()->findImportExport("lfp");
    importer.detach();
}

bool isLoaded()
{
    void* handle = dlopen(TARNWICK_OSG_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (!handle)
        return false;
    dlclose(handle);
    return true;
}

// OpenSceneGraph is loaded by this program before the backend, as in a host
// that uses it too. Loaded only as the backend's dependency it would bind
// its own lookups to the backend's copies of inline OpenSceneGraph symbols,
// and, itself never unloaded, pin the backend in memory.
TEST(ModuleLoadTest, LoadRegistersAndUnloadRemoves)
{
    ASSERT_FALSE(isLoaded());
    bool const imageReadersBefore = readerWriterPresent("jpeg") && readerWriterPresent("png");
    EXPECT_EQ(CKVRenderCallback::createRenderContext(-1), nullptr);
    EXPECT_EQ(CKVRuntimeClass::find("CKVRenderContextX11Imp"), nullptr);

    void* library = dlopen(TARNWICK_OSG_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(contextFactoriesWork());
    EXPECT_NE(CKVRuntimeClass::find("CKVRenderContextX11Imp"), nullptr);
    EXPECT_TRUE(sceneNodeFactoryWorks());
    EXPECT_NE(CKVRuntimeClass::find("CKVRCDispatchAttachSceneData"), nullptr);
    EXPECT_FALSE(imageReadersBefore);
    EXPECT_TRUE(readerWriterPresent("jpeg"));
    EXPECT_TRUE(readerWriterPresent("png"));
    for (char const* extension : kTileExtensions)
        EXPECT_TRUE(importerRegistered(extension)) << extension;

    // The exported entry answers as the host's table does for null.
    using InitFn = bool (*)();
    auto init = reinterpret_cast<InitFn>(dlsym(library, "_Z18initOSGApplicationv"));
    ASSERT_NE(init, nullptr);
    EXPECT_FALSE(init());
    EXPECT_TRUE(contextFactoriesWork());

    // A context the host never destroyed goes with the library.
    ASSERT_NE(CKVRenderCallback::createRenderContext(-1), nullptr);

    pinLfpImporter();
    ASSERT_EQ(dlclose(library), 0);
    // A library marked unloadable (GNU unique symbols do that) would keep
    // its factories registered: it must really be gone.
    ASSERT_FALSE(isLoaded());
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

TEST(ModuleLoadTest, ASecondLoadStartsAfresh)
{
    for (int round = 0; round < 2; ++round) {
        void* library = dlopen(TARNWICK_OSG_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_TRUE(contextFactoriesWork()) << "round " << round;
        EXPECT_TRUE(importerRegistered(".osgb")) << "round " << round;
        pinLfpImporter();
        ASSERT_EQ(dlclose(library), 0);
        EXPECT_FALSE(importerRegistered(".osgb")) << "round " << round;
        EXPECT_EQ(CKVRenderCallback::createRenderContext(-1), nullptr) << "round " << round;
    }
}

} // namespace
} // namespace Kelvor
