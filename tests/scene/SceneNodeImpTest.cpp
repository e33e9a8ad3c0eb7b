#include "BufferGeometryTestSupport.h"
#include "SceneNodeTestScene.h"

#include "scene/CKVOSGGeometry.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickRender/CKVGroupObject.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

using namespace SceneNodeTestScene;

class ForeignNode : public CKVSceneNode
{
};

class ForeignObject : public CKVRenderObject
{
};

TEST(SceneNodeImpTest, ChildNodesAreMirroredOnlyForBridgedNodes)
{
    kv_shared_ptr<CKVSceneNode> byName(
        static_cast<CKVSceneNode*>(CKVRuntimeClass::find("CKVSceneNodeImp")->createObject()));
    ASSERT_TRUE(byName && byName->isKindOf(CKVSceneNodeImp::desc()));
    auto* parent = static_cast<CKVSceneNodeImp*>(byName.get());
    EXPECT_EQ(parent->getOSGNode()->tryGetSceneNode(), parent);
    kv_shared_ptr<CKVSceneNodeImp> child = makeNode();
    kv_shared_ptr<CKVSceneNode> foreign(new ForeignNode);

    EXPECT_FALSE(parent->addChildNode(foreign.get()));
    EXPECT_EQ(parent->getNumChildNode(), 0u);
    ASSERT_TRUE(parent->addChildNode(child.get()));
    ASSERT_EQ(parent->getOSGNode()->getNumChildren(), 1u);
    EXPECT_EQ(parent->getOSGNode()->getChild(0), child->getOSGNode());
    EXPECT_FALSE(parent->removeChildNode(foreign.get()));
    EXPECT_TRUE(parent->removeChildNode(child.get()));
    EXPECT_EQ(parent->getOSGNode()->getNumChildren(), 0u);

    // A copy shares the transform node of its original.
    CKVSceneNodeImp copy(*child);
    EXPECT_EQ(copy.getOSGNode(), child->getOSGNode());
}

TEST(SceneNodeImpTest, RenderObjectsMapToTheirOwnNodes)
{
    kv_shared_ptr<CKVSceneNodeImp> holder = makeNode();
    kv_shared_ptr<CKVSceneNodeImp> shown = makeNode();
    kv_shared_ptr<CKVGroupObject> group(new CKVGroupObject(shown.get()));
    kv_shared_ptr<CKVGroupObject> foreignGroup(new CKVGroupObject(new ForeignNode));
    kv_shared_ptr<CKVRenderObject> foreign(new ForeignObject);

    EXPECT_FALSE(holder->addRenderObject(foreign.get()));
    EXPECT_FALSE(holder->addRenderObject(foreignGroup.get()));
    ASSERT_TRUE(holder->addRenderObject(group.get()));
    ASSERT_EQ(holder->getOSGNode()->getNumChildren(), 1u);
    EXPECT_EQ(holder->getOSGNode()->getChild(0), shown->getOSGNode());
    EXPECT_TRUE(holder->removeRenderObject(group.get()));
    EXPECT_EQ(holder->getOSGNode()->getNumChildren(), 0u);
}

// Inserting is where host buffers first become arrays: the geometry is
// packed and rebuilt before it goes under the node.
TEST(SceneNodeImpTest, InsertingBufferGeometryPacksAndRebuildsIt)
{
    BufferFactoriesScope factories;
    kv_shared_ptr<CKVBufferGeometryImp> geometry = makeHostGeometry();
    ASSERT_TRUE(geometry);
    kv_shared_ptr<CKVLogicBufferGeometry> part = makeSquarePart(0.0f, 0.0f, 1.0f, 1.0f);
    ASSERT_TRUE(geometry->updateLogicBuffers({true}, {part.get()}));
    CKVOSGGeometry* osgGeometry = geometry->getOSGGeometry();
    ASSERT_EQ(osgGeometry->getVertexArray(), nullptr);

    kv_shared_ptr<CKVSceneNodeImp> node = makeNode();
    ASSERT_TRUE(node->addRenderObject(geometry.get()));
    ASSERT_EQ(node->getOSGNode()->getNumChildren(), 1u);
    EXPECT_EQ(node->getOSGNode()->getChild(0), osgGeometry);
    ASSERT_NE(osgGeometry->getVertexArray(), nullptr);
    EXPECT_EQ(osgGeometry->getVertexArray()->getNumElements(), 4u);
}

} // namespace
} // namespace Kelvor
