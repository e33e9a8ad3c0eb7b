#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVRCAreaSelectObject.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVRCInsertSceneNode.h"
#include "TarnwickRender/CKVRCLineSegmentIntersection.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVRCUpdateBufferGeometry.h"
#include "TarnwickRender/CKVRCUpdateClipTest.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRenderObject.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

using namespace Kelvor;

namespace {

class CountedNode : public CKVSceneNode
{
public:
    explicit CountedNode(std::atomic<int>* destroyed = nullptr) : mDestroyed(destroyed) {}
    ~CountedNode() override
    {
        if (mDestroyed)
            ++*mDestroyed;
    }
    std::atomic<int>* mDestroyed;
};

class BoxObject : public CKVRenderObject
{
public:
    BoxObject(CKVPoint3D const& a, CKVPoint3D const& b) : mBox(a, b) {}
    CKVBndBox computeBoundingBox() const override { return mBox; }
    CKVBndBox mBox;
};

class CountedResult : public CKVSelectionResult
{
public:
    explicit CountedResult(std::atomic<int>* destroyed) : mDestroyed(destroyed) {}
    ~CountedResult() override { ++*mDestroyed; }
    std::atomic<int>* mDestroyed;
};

} // namespace

TEST(RecordsSpineTest, CommandsKeepTheirNodesAndObjectsAliveUntilDispatched)
{
    std::atomic<int> destroyed{0};
    auto* parent = new CountedNode(&destroyed);
    auto* child = new CountedNode(&destroyed);
    kv_shared_ptr<CKVRenderCommand> insert(new CKVRCInsertSceneNode(parent, child));
    EXPECT_EQ(0, destroyed.load());
    insert = nullptr;
    EXPECT_EQ(2, destroyed.load());

    auto* node = new CountedNode(&destroyed);
    kv_shared_ptr<CKVRenderObject> object(new BoxObject(CKVPoint3D(0, 0, 0), CKVPoint3D(1, 1, 1)));
    {
        CKVRCInsertRenderObject record(node, object.get());
        EXPECT_EQ(2u, object->refCount());
    }
    EXPECT_EQ(3, destroyed.load());
    EXPECT_EQ(1u, object->refCount());
}

TEST(RecordsSpineTest, SelectionResultsAreOwnedOrCopiedByTheRecord)
{
    std::atomic<int> destroyed{0};
    {
        CKVRCPickSelectObject pick(CKVPoint3D(10, 20, 0));
        EXPECT_EQ(nullptr, pick.getSelection());
        auto* result = new CountedResult(&destroyed);
        result->setPosition(CKVPoint3D(1, 2, 3));
        pick.setSelection(result);
        EXPECT_EQ(result, pick.getSelection());
        pick.setSelection(new CountedResult(&destroyed)); // a later result replaces the earlier one
        EXPECT_EQ(1, destroyed.load());
    }
    EXPECT_EQ(2, destroyed.load());
    {
        CKVRCLineSegmentIntersection line(CKVLineSeg(CKVPoint3D(0, 0, 0), CKVPoint3D(0, 0, 5)));
        line.setSelection(new CountedResult(&destroyed));
    }
    EXPECT_EQ(3, destroyed.load());

    CKVRCAreaSelectObject area(CKVPoint3D(1, 2, 0), CKVPoint3D(30, 40, 0), 5);
    {
        std::vector<CKVSelectionResult> found(3);
        for (int i = 0; i < 3; ++i)
            found[i].setPosition(CKVPoint3D(i, 0, 0));
        area.setResult(found.data(), static_cast<unsigned int>(found.size()));
    } // the dispatcher's vector goes away right after the call
    ASSERT_EQ(3u, area.getResultCount());
    EXPECT_DOUBLE_EQ(2.0, area.getResult(2)->getPosition().x);
    EXPECT_EQ(nullptr, area.getResult(3));
    area.setResult(nullptr, 4);
    EXPECT_EQ(0u, area.getResultCount());
}

TEST(RecordsSpineTest, ClipPlanesAreCopiedAtRecording)
{
    std::vector<CKVVec4<float>> planes = {{1, 0, 0, -2}, {0, 1, 0, 3}};
    CKVRCUpdateClipTest record(planes.data(), 2);
    planes[0].w = 99.0f;
    planes.clear();
    ASSERT_EQ(2u, record.getNumClipTestPlanes());
    EXPECT_FLOAT_EQ(-2.0f, record.getClipTestPlanesArr()[0].w);
    EXPECT_FLOAT_EQ(3.0f, record.getClipTestPlanesArr()[1].w);

    CKVRCUpdateClipTest off(nullptr, 3);
    EXPECT_EQ(0u, off.getNumClipTestPlanes());
    EXPECT_EQ(nullptr, off.getClipTestPlanesArr());
}

TEST(RecordsSpineTest, LogicBufferChangesAreTakenOnceInOrder)
{
    CKVRCUpdateBufferGeometry record(nullptr);
    kv_shared_ptr<CKVLogicBufferGeometry> a(new CKVLogicBufferGeometry);
    kv_shared_ptr<CKVLogicBufferGeometry> b(new CKVLogicBufferGeometry);
    EXPECT_TRUE(record.addLogicBuffer(a.get(), true));
    EXPECT_TRUE(record.addLogicBuffer(b.get(), true));
    EXPECT_TRUE(record.addLogicBuffer(a.get(), false));
    EXPECT_FALSE(record.addLogicBuffer(nullptr, true));

    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
    std::vector<bool> add;
    record.takeLogicBufferGeometry(buffers, add);
    ASSERT_EQ(3u, buffers.size());
    EXPECT_EQ(a, buffers[0]);
    EXPECT_EQ(b, buffers[1]);
    EXPECT_EQ(a, buffers[2]);
    EXPECT_EQ((std::vector<bool>{true, true, false}), add);

    record.takeLogicBufferGeometry(buffers, add);
    EXPECT_EQ(3u, buffers.size());
    EXPECT_EQ(0u, record.getNumLogicBuffer());
}

TEST(RecordsSpineTest, GraphicsModelBoxIsTheUnionOfItsFields)
{
    kv_shared_ptr<CKVGraphicsModel> model(new CKVGraphicsModel);
    EXPECT_NE(nullptr, model->getRenderCommandCache());
    EXPECT_FALSE(model->getBoundingBox().valid());

    auto* building = new CountedNode;
    building->addRenderObject(new BoxObject(CKVPoint3D(0, 0, 0), CKVPoint3D(10, 5, 3)));
    auto* terrain = new CountedNode;
    terrain->addRenderObject(new BoxObject(CKVPoint3D(-50, -50, -1), CKVPoint3D(50, 50, 0)));
    EXPECT_TRUE(model->setField(0, new CKVGraphicsModelField(building)));
    EXPECT_TRUE(model->setField(9, new CKVGraphicsModelField(terrain)));
    EXPECT_TRUE(model->setField(4, new CKVGraphicsModelField)); // a field without a node adds nothing
    kv_shared_ptr<CKVGraphicsModelField> outOfRange(new CKVGraphicsModelField);
    EXPECT_FALSE(model->setField(10, outOfRange.get()));
    EXPECT_EQ(nullptr, model->getField(10));
    EXPECT_EQ(nullptr, model->getField(3));
    EXPECT_EQ(building, model->getField(0)->getNodeObject());

    CKVBndBox const box = model->getBoundingBox();
    ASSERT_TRUE(box.valid());
    EXPECT_TRUE(box.minPt().isEqualTo(CKVPoint3D(-50, -50, -1)));
    EXPECT_TRUE(box.maxPt().isEqualTo(CKVPoint3D(50, 50, 3)));

    EXPECT_TRUE(model->setField(9, nullptr));
    EXPECT_TRUE(model->getBoundingBox().maxPt().isEqualTo(CKVPoint3D(10, 5, 3)));
}
