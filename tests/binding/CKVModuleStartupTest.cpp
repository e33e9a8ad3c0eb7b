#include "binding/CKVModuleStartup.h"
#include "binding/CKVRenderContextImp.h"
#include "binding/CKVRenderContextRegistry.h"
#include "binding/KVNotifyHandler.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickCommon/Common.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVUniform.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"
#include "TarnwickRender/CKVVertexIndex.h"

#include <osgDB/Registry>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace Kelvor {
namespace {

bool readerWriterPresent(char const* extension)
{
    // Looked up in the list only: asking the registry by extension would
    // load a missing plugin and hide the fault.
    for (osgDB::ReaderWriter* readerWriter : osgDB::Registry::instance()->getReaderWriterList()) {
        if (readerWriter->acceptsExtension(extension))
            return true;
    }
    return false;
}

TEST(CKVModuleStartupTest, LoadingRegistersTheContextFactoriesAndImageReaders)
{
    EXPECT_TRUE(CKVModuleStartup::isLoaded());
    EXPECT_TRUE(CKVRenderContextRegistry::isInstalled());
    EXPECT_TRUE(readerWriterPresent("jpeg"));
    EXPECT_TRUE(readerWriterPresent("jpg"));
    EXPECT_TRUE(readerWriterPresent("png"));

    CKVRenderContext* context = CKVRenderCallback::createRenderContext(-1);
    ASSERT_NE(context, nullptr);
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
}

TEST(CKVModuleStartupTest, LoadingRegistersTheObjectFactoriesThatExist)
{
    kv_shared_ptr<CKVSceneNode> node = CKVRenderCallback::createSceneNode();
    ASSERT_TRUE(node.valid());
    EXPECT_STREQ(node->isA()->name(), "CKVSceneNodeImp");
    kv_shared_ptr<CKVBufferGeometry> geometry = CKVRenderCallback::createBufferGeometry();
    EXPECT_TRUE(geometry.valid());
    kv_shared_ptr<CKVVertexIndex> index = CKVRenderCallback::createVertexIndex(2);
    EXPECT_TRUE(index.valid());
    kv_shared_ptr<CKVVertexBufferAttribute> attribute =
        CKVRenderCallback::createVertexBufferAttribute(CKVVertexBufferAttribute::Name(1));
    EXPECT_TRUE(attribute.valid());
    kv_shared_ptr<CKVRenderCommandDispatch> dispatch = CKVRenderCallback::createRenderCommandDispatch(9);
    EXPECT_TRUE(dispatch.valid());
    // Uniforms: an invalid data type is refused, a float is made.
    EXPECT_EQ(CKVRenderCallback::createUniform("Invalid", 0), nullptr);
    kv_shared_ptr<CKVUniform> uniform = CKVRenderCallback::createUniform("Opacity_F", 10);
    ASSERT_TRUE(uniform.valid());
    EXPECT_STREQ(uniform->isA()->name(), "CKVUniformImp");
    EXPECT_EQ(uniform->getDataType(), CKVUniform::kFloat);
    EXPECT_STREQ(uniform->getName(), "Opacity_F");
    // The dispatch records exist before anything asks for them by name.
    EXPECT_NE(CKVRuntimeClass::find("CKVRCDispatchApplyBackGround"), nullptr);
}

TEST(CKVModuleStartupTest, InitOSGApplicationPassesNullAndLeavesTheFactory)
{
    // The host refuses a null factory, so the answer is false ...
    EXPECT_FALSE(initOSGApplication());
    // ... and the factory that static initialisation registered stays.
    CKVRenderContext* context = CKVRenderCallback::createRenderContext(-1);
    ASSERT_NE(context, nullptr);
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
}

TEST(CKVModuleStartupTest, ContextClassesCanBeCreatedByName)
{
    for (char const* name : {"CKVRenderContextImp", "CKVRenderContextX11Imp"}) {
        CKVRuntimeClass const* record = CKVRuntimeClass::find(name);
        ASSERT_NE(record, nullptr) << name;
        CKVObject* object = record->createObject();
        ASSERT_NE(object, nullptr) << name;
        EXPECT_TRUE(object->isKindOf(CKVRenderContextImp::desc())) << name;
        EXPECT_STREQ(object->isA()->name(), name);
        delete object;
    }
}

TEST(CKVModuleStartupTest, EveryClassTheHostMaySeeHasARecordUnderItsBase)
{
    // A class whose record is missing, or hangs under the wrong base, is
    // invisible to the host's isKindOf checks and to creation by name.
    struct Expected
    {
        char const* name;
        char const* base;
        bool creatable;
    };
    Expected const classes[] = {
        {"CKVFBXAnimationImp", "CKVFBXAnimation", false},
        {"CKVAxisHandle", "CKVSharedObject", true},
        {"CKVBackGround", "CKVSharedObject", true},
        {"CKVBackGroundColor", "CKVBackGround", true},
        {"CKVBackGroundSkyBox", "CKVBackGround", true},
        {"CKVBackGroundWaterMask", "CKVBackGround", true},
        {"CKVBufferGeometryImp", "CKVBufferGeometry", true},
        {"CKVLfpImport", "CKVModelImportExport", true},
        {"CKVOSGBImport", "CKVModelImportExport", true},
        {"CKVS3CImport", "CKVModelImportExport", true},
        {"CKVRenderContextImp", "CKVRenderContext", true},
        {"CKVRenderContextX11Imp", "CKVRenderContextImp", true},
        {"CKVSceneNodeImp", "CKVSceneNode", true},
        {"CKVTextGeometryImp", "CKVTextGeometry", true},
        {"CKVUniformImp", "CKVUniform", true},
        {"CKVVertexBufferAttributeImp", "CKVVertexBufferAttribute", true},
        {"CKVVertexIndexImp", "CKVVertexIndex", true},
    };
    for (Expected const& expected : classes) {
        CKVRuntimeClass const* record = CKVRuntimeClass::find(expected.name);
        ASSERT_NE(record, nullptr) << expected.name;
        ASSERT_NE(record->base(), nullptr) << expected.name;
        EXPECT_STREQ(record->base()->name(), expected.base) << expected.name;
        EXPECT_EQ(record->canCreate(), expected.creatable) << expected.name;
    }
}

TEST(KVNotifyHandlerTest, LogsKnownSeveritiesWithTheirTimeAndSkipsTheRest)
{
    CKVAString path;
    ASSERT_TRUE(Common::getModuleDirectory(path));
    path.append("/log.txt");
    {
        osg::ref_ptr<KVNotifyHandler> handler = new KVNotifyHandler;
        ASSERT_TRUE(handler->isOpen());
        handler->notify(osg::FATAL, "fatal text");
        handler->notify(osg::DEBUG_FP, "fp text");
        handler->notify(osg::ALWAYS, "always text");
        handler->notify(static_cast<osg::NotifySeverity>(7), "seven text");
        handler->notify(osg::WARN, "");
        // Flushed at once: the file is complete before the handler goes.
        std::ifstream file(path.c_str());
        std::stringstream text;
        text << file.rdbuf();
        std::string const content = text.str();
        EXPECT_NE(content.find("FATAL: fatal text\n"), std::string::npos);
        EXPECT_NE(content.find("DEBUG_FP: fp text\n"), std::string::npos);
        EXPECT_EQ(content.find("always"), std::string::npos);
        EXPECT_EQ(content.find("seven"), std::string::npos);
        EXPECT_EQ(content.find("WARN"), std::string::npos);
        // One time line per logged message, before it.
        EXPECT_EQ(content.rfind("Time: ", 0), 0u);
        int hours = -1, minutes = -1, seconds = -1;
        ASSERT_EQ(std::sscanf(content.c_str(), "Time: %d:%d:%d\n", &hours, &minutes, &seconds), 3);
        EXPECT_GE(hours, 0);
        EXPECT_LT(hours, 24);
        EXPECT_LT(minutes, 60);
    }
    std::remove(path.c_str());
}

TEST(KVNotifyHandlerTest, IsNotInstalledByTheLibrary)
{
    osg::NotifyHandler* handler = osg::getNotifyHandler();
    ASSERT_NE(handler, nullptr);
    EXPECT_STRNE(typeid(*handler).name(), typeid(KVNotifyHandler).name());
}

} // namespace
} // namespace Kelvor
