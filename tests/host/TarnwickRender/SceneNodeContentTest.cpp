#include "TarnwickRender/CKVGroupObject.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVTransformState.h"
#include "TarnwickRender/CKVVisibilityState.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Kelvor;

namespace {

// Records every call the host makes into the backend side, in order, and
// refuses the objects it is told to refuse.
class RecordingNode : public CKVSceneNode
{
public:
    RecordingNode(std::string name, std::vector<std::string>* log, bool* deleted = nullptr)
        : mLog(log), mDeleted(deleted)
    {
        setName(name.c_str());
    }
    RecordingNode(RecordingNode const& other) : CKVSceneNode(other), mLog(other.mLog), mDeleted(nullptr) {}
    ~RecordingNode() override
    {
        if (mDeleted)
            *mDeleted = true;
    }
    RecordingNode& operator=(RecordingNode const& other)
    {
        CKVSceneNode::operator=(other);
        return *this;
    }

    void* refuse = nullptr;

protected:
    bool insertChildNodeImp(CKVSceneNode* child) override { return note("insertChild", child->getName(), child); }
    bool removeChildNodeImp(CKVSceneNode* child) override { return note("removeChild", child->getName(), child); }
    bool insertRenderObjectImp(CKVRenderObject* object) override { return note("insertObject", "", object); }
    bool removeRenderObjectImp(CKVRenderObject* object) override { return note("removeObject", "", object); }

private:
    bool note(char const* what, std::string const& name, void* arg)
    {
        mLog->push_back(std::string(getName()) + "." + what + (name.empty() ? "" : ":" + name));
        return arg != refuse;
    }

    std::vector<std::string>* mLog;
    bool* mDeleted;
};

class BoxObject : public CKVRenderObject
{
public:
    explicit BoxObject(CKVBndBox box) : mBox(box) {}
    CKVBndBox computeBoundingBox() const override { return mBox; }

private:
    CKVBndBox mBox;
};

class SceneNodeContent : public ::testing::Test
{
protected:
    std::vector<std::string> log;
    kv_shared_ptr<RecordingNode> root{new RecordingNode("root", &log)};
};

} // namespace

TEST_F(SceneNodeContent, ListChangesReachTheBackendFirstAndInOrder)
{
    kv_shared_ptr<RecordingNode> a(new RecordingNode("a", &log));
    kv_shared_ptr<RecordingNode> b(new RecordingNode("b", &log));
    kv_shared_ptr<BoxObject> object(new BoxObject(CKVBndBox()));

    EXPECT_TRUE(root->addChildNode(a.get()));
    EXPECT_TRUE(root->addChildNode(b.get()));
    EXPECT_TRUE(root->addRenderObject(object.get()));
    EXPECT_TRUE(root->removeChildNode(a.get()));
    EXPECT_TRUE(root->removeAllRenderObject());

    std::vector<std::string> const expected = {"root.insertChild:a", "root.insertChild:b", "root.insertObject",
                                               "root.removeChild:a", "root.removeObject"};
    EXPECT_EQ(expected, log);
    ASSERT_EQ(1u, root->getNumChildNode());
    EXPECT_EQ(b.get(), root->getChildNode(0));
    EXPECT_EQ(0u, root->getNumRenderObject());
}

TEST_F(SceneNodeContent, RefusedChangesLeaveTheListsAsTheyWere)
{
    kv_shared_ptr<RecordingNode> a(new RecordingNode("a", &log));
    kv_shared_ptr<RecordingNode> b(new RecordingNode("b", &log));
    root->refuse = b.get();

    EXPECT_TRUE(root->addChildNode(a.get()));
    EXPECT_FALSE(root->addChildNode(b.get()));
    EXPECT_EQ(1u, root->getNumChildNode());

    root->refuse = nullptr;
    ASSERT_TRUE(root->addChildNode(b.get()));
    root->refuse = a.get();
    EXPECT_FALSE(root->removeChildNode(a.get()));
    // removeAll lets go of what the backend released and keeps the rest.
    EXPECT_FALSE(root->removeAllChildNode());
    ASSERT_EQ(1u, root->getNumChildNode());
    EXPECT_EQ(a.get(), root->getChildNode(0));
}

TEST_F(SceneNodeContent, InvalidChildrenAreRefusedWithoutAskingTheBackend)
{
    kv_shared_ptr<RecordingNode> child(new RecordingNode("child", &log));
    kv_shared_ptr<RecordingNode> grandChild(new RecordingNode("grandChild", &log));
    ASSERT_TRUE(root->addChildNode(child.get()));
    ASSERT_TRUE(child->addChildNode(grandChild.get()));
    log.clear();

    EXPECT_FALSE(root->addChildNode(nullptr));
    EXPECT_FALSE(root->addChildNode(root.get()));
    EXPECT_FALSE(root->addChildNode(child.get()));        // already a child
    EXPECT_FALSE(grandChild->addChildNode(root.get()));   // would close a cycle
    EXPECT_FALSE(root->removeChildNode(grandChild.get())); // not a direct child
    // A group object standing for an ancestor would close a cycle as well.
    kv_shared_ptr<CKVGroupObject> group(new CKVGroupObject(root.get()));
    EXPECT_FALSE(grandChild->addRenderObject(group.get()));
    EXPECT_TRUE(log.empty());
}

TEST_F(SceneNodeContent, TheNodeKeepsItsChildrenAlive)
{
    bool deleted = false;
    RecordingNode* child = new RecordingNode("child", &log, &deleted);
    ASSERT_TRUE(root->addChildNode(child));
    EXPECT_EQ(1u, child->refCount());
    EXPECT_FALSE(deleted);
    ASSERT_TRUE(root->removeChildNode(child));
    EXPECT_TRUE(deleted);
}

TEST_F(SceneNodeContent, ProgramParameterAndStatesRaiseTheirOwnFlags)
{
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kProgramParamChanged));
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));

    CKVProgramParam param(CKVProgramParam::kSurfacePBR);
    root->setProgramParam(param);
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kProgramParamChanged));
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
    EXPECT_EQ(param, root->getProgramParam());

    CKVVisibilityState* visibility = new CKVVisibilityState;
    ASSERT_TRUE(root->getStateSet()->addState(visibility));
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kStatesChanged));

    // The backend clears one flag at a time, then applies and cleans the state.
    root->removeUpdateMode(CKVSceneNode::kStatesChanged);
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kProgramParamChanged));
    visibility->dirty(false);
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));

    visibility->removeVisibility(CKVVisibilityState::kDisplay);
    EXPECT_TRUE(visibility->isDirty());
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
    EXPECT_FALSE(visibility->getVisibility(CKVVisibilityState::kDisplay));
}

TEST_F(SceneNodeContent, AStateLeavingTheSetNoLongerReachesTheNode)
{
    kv_shared_ptr<CKVVisibilityState> first(new CKVVisibilityState);
    ASSERT_TRUE(root->getStateSet()->addState(first.get()));
    // Replacing by type detaches the old state.
    ASSERT_TRUE(root->getStateSet()->addState(new CKVVisibilityState));
    EXPECT_NE(first.get(), root->getStateSet()->getState(CKVSceneNodeState::kVisibility));
    root->removeUpdateMode(CKVSceneNode::kStatesChanged);

    first->removeVisibility(CKVVisibilityState::kDisplay);
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));

    // A detached state may join another node; a held one may not.
    kv_shared_ptr<RecordingNode> other(new RecordingNode("other", &log));
    EXPECT_TRUE(other->getStateSet()->addState(first.get()));
    EXPECT_FALSE(root->getStateSet()->addState(first.get()));

    // Removing a state is a change the backend has to see.
    ASSERT_TRUE(root->getStateSet()->removeState(CKVSceneNodeState::kVisibility));
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
    EXPECT_FALSE(root->getStateSet()->removeState(CKVSceneNodeState::kVisibility));
}

TEST_F(SceneNodeContent, AnAbsentStateIsNull)
{
    CKVSceneNode const& constRoot = *root;
    EXPECT_EQ(nullptr, root->getStateSet()->getState(CKVSceneNodeState::kCulling));
    EXPECT_EQ(nullptr, constRoot.getStateSet()->getState(CKVSceneNodeState::kMaterial));
    ASSERT_TRUE(root->getStateSet()->addState(new CKVMaterialState));
    EXPECT_EQ(nullptr, root->getStateSet()->getState(CKVSceneNodeState::kTransform));
    EXPECT_NE(nullptr, constRoot.getStateSet()->getState(CKVSceneNodeState::kMaterial));
}

TEST_F(SceneNodeContent, WrittenBackAutoTransformMatrixDoesNotDirtyTheState)
{
    CKVTransformState* transform = new CKVTransformState;
    ASSERT_TRUE(root->getStateSet()->addState(transform));
    transform->setTransformMode(CKVTransformState::kAutoTransform);
    transform->dirty(false);
    root->removeUpdateMode(CKVSceneNode::kStatesChanged);

    CKVMatrix3D computed = CKVMatrix3D::translation(CKVVector3D(1.0, 2.0, 3.0));
    transform->setMatrix(computed);
    EXPECT_FALSE(transform->isDirty());
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
    EXPECT_TRUE(transform->getMatrix().isEqualTo(computed));

    transform->setTransformMode(CKVTransformState::kMatrix);
    transform->dirty(false);
    transform->setMatrix(CKVMatrix3D());
    EXPECT_TRUE(transform->isDirty());
    EXPECT_TRUE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
}

TEST_F(SceneNodeContent, BoundingBoxFollowsTransformsDownTheTree)
{
    CKVBndBox unit(CKVPoint3D(0, 0, 0), CKVPoint3D(1, 1, 1));
    kv_shared_ptr<RecordingNode> child(new RecordingNode("child", &log));
    kv_shared_ptr<RecordingNode> grandChild(new RecordingNode("grandChild", &log));
    ASSERT_TRUE(root->addRenderObject(new BoxObject(unit)));
    ASSERT_TRUE(root->addChildNode(child.get()));
    ASSERT_TRUE(child->addChildNode(grandChild.get()));
    ASSERT_TRUE(grandChild->addRenderObject(new BoxObject(unit)));

    CKVTransformState* childMove = new CKVTransformState;
    childMove->setTransformMode(CKVTransformState::kMatrix);
    childMove->setMatrix(CKVMatrix3D::translation(CKVVector3D(10, 0, 0)));
    child->getStateSet()->addState(childMove);
    CKVTransformState* grandChildScale = new CKVTransformState;
    grandChildScale->setTransformMode(CKVTransformState::kMatrix);
    grandChildScale->setMatrix(CKVMatrix3D::scaling(2, 2, 2));
    grandChild->getStateSet()->addState(grandChildScale);

    CKVBndBox const box = root->computeBoundingBox();
    ASSERT_TRUE(box.valid());
    EXPECT_TRUE(box.minPt().isEqualTo(CKVPoint3D(0, 0, 0)));
    EXPECT_TRUE(box.maxPt().isEqualTo(CKVPoint3D(12, 2, 2)));

    // A transform in mode none is ignored, matrix or not.
    childMove->setTransformMode(CKVTransformState::kNone);
    EXPECT_TRUE(root->computeBoundingBox().maxPt().isEqualTo(CKVPoint3D(2, 2, 2)));

    // A group object contributes its node's box.
    kv_shared_ptr<RecordingNode> holder(new RecordingNode("holder", &log));
    ASSERT_TRUE(holder->addRenderObject(new CKVGroupObject(grandChild.get())));
    EXPECT_TRUE(holder->computeBoundingBox().maxPt().isEqualTo(CKVPoint3D(2, 2, 2)));
}

TEST_F(SceneNodeContent, CopiesTakeStatesButNotStructure)
{
    kv_shared_ptr<RecordingNode> child(new RecordingNode("child", &log));
    ASSERT_TRUE(root->addChildNode(child.get()));
    CKVVisibilityState* visibility = new CKVVisibilityState;
    visibility->removeVisibility(CKVVisibilityState::kDisplay);
    root->getStateSet()->addState(visibility);
    root->setProgramParam(CKVProgramParam(CKVProgramParam::kTerrain));

    kv_shared_ptr<RecordingNode> copy(new RecordingNode(*root));
    EXPECT_STREQ("root", copy->getName());
    EXPECT_EQ(0u, copy->getNumChildNode());
    EXPECT_EQ(CKVProgramParam::kTerrain, copy->getProgramParam().getType());
    EXPECT_TRUE(copy->getUpdateMode(CKVSceneNode::kProgramParamChanged));
    EXPECT_TRUE(copy->getUpdateMode(CKVSceneNode::kStatesChanged));

    CKVSceneNodeState* copied = copy->getStateSet()->getState(CKVSceneNodeState::kVisibility);
    ASSERT_NE(nullptr, copied);
    EXPECT_NE(visibility, copied);
    ASSERT_TRUE(copied->isKindOf(CKVVisibilityState::desc()));
    EXPECT_FALSE(static_cast<CKVVisibilityState*>(copied)->getVisibility(CKVVisibilityState::kDisplay));

    // The copy's state belongs to the copy alone.
    root->removeUpdateMode(CKVSceneNode::kStatesChanged);
    static_cast<CKVVisibilityState*>(copied)->addVisibility(CKVVisibilityState::kDisplay);
    EXPECT_FALSE(root->getUpdateMode(CKVSceneNode::kStatesChanged));
    EXPECT_FALSE(visibility->getVisibility(CKVVisibilityState::kDisplay));
}
