// Picking end to end: boxes sent to a host-owned window as render commands,
// then asked about only through the three pick commands.
#include "binding/RenderContextFixture.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"

#include "TarnwickGeometry/CKVLineSeg.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCAreaSelectObject.h"
#include "TarnwickRender/CKVRCLineSegmentIntersection.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <set>
#include <stdexcept>
#include <vector>

using namespace Kelvor;

namespace {

using PickCommandsGLTest = RenderContextFixture;

// A closed box of half size 1 around `centre`, shown as `drawable`.
kv_shared_ptr<CKVLogicBufferGeometry> box(CKVPoint3D const& centre, CKVDrawable* drawable)
{
    std::vector<float> vertices;
    for (int i = 0; i < 8; ++i)
    {
        vertices.push_back(float(centre.x + ((i & 1) ? 1 : -1)));
        vertices.push_back(float(centre.y + ((i & 2) ? 1 : -1)));
        vertices.push_back(float(centre.z + ((i & 4) ? 1 : -1)));
    }
    unsigned int const indices[] = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                                    2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry(drawable));
    part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices.data(), unsigned(vertices.size()));
    part->setIndexData(indices, 36);
    return part;
}

} // namespace

TEST_F(PickCommandsGLTest, PickAreaAndSegmentCommandsAnswerWithTheHostDrawables)
{
    ASSERT_NE(start(), nullptr);

    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    ASSERT_TRUE(node.valid());
    node->setProgramParam(CKVProgramParam(CKVProgramParam::kFlatColor));
    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    ASSERT_TRUE(geometry.valid());
    kv_shared_ptr<CKVDrawable> a = new CKVDrawable(11);
    kv_shared_ptr<CKVDrawable> b = new CKVDrawable(22);
    kv_shared_ptr<CKVLogicBufferGeometry> boxes[] = {box(CKVPoint3D(0, 0, 0), a.get()),
                                                     box(CKVPoint3D(-3, 1.5, 0), b.get())};
    for (auto& part : boxes)
        ASSERT_TRUE(geometry->addLogicBuffer(part.get()));

    // Six units up the z axis; the boxes' front faces are 5 units away, where
    // the view is 2 tan(30 deg) 5 = 5.77 units high and 1.5 times as wide.
    ASSERT_TRUE(show(node.get(), geometry.get(), cameraOnZAxis(6.0)));

    // The centre pixel shows box A's front face; (15, 15) from the top left
    // shows box B, which a pick with y counted the other way would miss.
    kv_shared_ptr<CKVRCPickSelectObject> centre = new CKVRCPickSelectObject(CKVPoint3D(kWidth / 2, kHeight / 2, 0));
    kv_shared_ptr<CKVRCPickSelectObject> upperLeft = new CKVRCPickSelectObject(CKVPoint3D(15, 15, 0));
    kv_shared_ptr<CKVRCPickSelectObject> empty = new CKVRCPickSelectObject(CKVPoint3D(kWidth - 4, kHeight - 4, 0));
    kv_shared_ptr<CKVRCLineSegmentIntersection> downwards =
        new CKVRCLineSegmentIntersection(CKVLineSeg(CKVPoint3D(-3.2, 1.4, 10), CKVPoint3D(-3.2, 1.4, -10)));
    kv_shared_ptr<CKVRCAreaSelectObject> all =
        new CKVRCAreaSelectObject(CKVPoint3D(kWidth - 1, kHeight - 1, 0), CKVPoint3D(0, 0, 0), 2);
    kv_shared_ptr<CKVRCAreaSelectObject> right =
        new CKVRCAreaSelectObject(CKVPoint3D(35, 20, 0), CKVPoint3D(kWidth - 1, kHeight - 1, 0), 10);
    kv_shared_ptr<CKVRenderCommand> queries[] = {centre, upperLeft, empty, downwards, all, right};
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    for (auto& command : queries)
        cache->write(command.get());
    ASSERT_TRUE(cache->submitAndWait(right.get(), 10000));

    ASSERT_NE(centre->getSelection(), nullptr);
    EXPECT_EQ(centre->getSelection()->getDrawable(), a.get());
    EXPECT_EQ(centre->getSelection()->getSceneNode(), node.get());
    CKVPoint3D const onFace = centre->getSelection()->getPosition();
    EXPECT_NEAR(onFace.z, 1.0, 1e-3) << "on the front face";
    EXPECT_NEAR(onFace.x, 0.0, 0.1);
    EXPECT_NEAR(onFace.y, 0.0, 0.1);

    ASSERT_NE(upperLeft->getSelection(), nullptr);
    EXPECT_EQ(upperLeft->getSelection()->getDrawable(), b.get());
    EXPECT_EQ(empty->getSelection(), nullptr) << "background only";

    ASSERT_NE(downwards->getSelection(), nullptr);
    EXPECT_EQ(downwards->getSelection()->getDrawable(), b.get());
    EXPECT_NEAR(downwards->getSelection()->getPosition().z, 1.0, 1e-6);

    // The two front faces are nearest; the boxes' sides follow, alternating.
    ASSERT_EQ(all->getResultCount(), 2u);
    std::set<CKVDrawable const*> const selected{all->getResult(0)->getDrawable(), all->getResult(1)->getDrawable()};
    EXPECT_EQ(selected, (std::set<CKVDrawable const*>{a.get(), b.get()}));
    ASSERT_EQ(right->getResultCount(), 1u);
    EXPECT_EQ(right->getResult(0)->getDrawable(), a.get());
}

// The tick runs on the window's timer thread, where an exception would end
// the host's process. A query over broken instance rows throws out of the
// picker, and so does a faulty command: each fails, its writer is woken and
// the commands after it are answered.
TEST_F(PickCommandsGLTest, ACommandThatThrowsFailsAndTheDrainGoesOn)
{
    ASSERT_NE(start(), nullptr);

    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    node->setProgramParam(CKVProgramParam(CKVProgramParam::kFlatColor));
    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    ASSERT_TRUE(geometry.valid());
    kv_shared_ptr<CKVDrawable> a = new CKVDrawable(11);
    kv_shared_ptr<CKVLogicBufferGeometry> parts[] = {box(CKVPoint3D(0, 0, 0), nullptr),
                                                     new CKVLogicBufferGeometry(a.get()),
                                                     new CKVLogicBufferGeometry(new CKVDrawable(22))};
    parts[1]->setInstanceMatrix(CKVMatrix3D());
    parts[2]->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(3, 0, 0)));
    for (auto& part : parts)
        ASSERT_TRUE(geometry->addLogicBuffer(part.get()));
    ASSERT_TRUE(show(node.get(), geometry.get(), cameraOnZAxis(6.0)));

    // The rows are broken and mended inside one drain, so no frame draws them.
    osg::Vec4Array* lastRow = static_cast<osg::Vec4Array*>(
        static_cast<CKVBufferGeometryImp*>(geometry.get())->getOSGGeometry()->getInstanceMatrixRow(3));
    ASSERT_NE(lastRow, nullptr);
    osg::ref_ptr<osg::Vec4Array> const kept = new osg::Vec4Array(*lastRow);
    CKVPoint3D const centre(kWidth / 2, kHeight / 2, 0);
    kv_shared_ptr<CKVRCPickSelectObject> broken = new CKVRCPickSelectObject(centre);
    kv_shared_ptr<CKVRCPickSelectObject> mended = new CKVRCPickSelectObject(centre);
    kv_shared_ptr<CKVRenderCommand> commands[] = {
        new ProbeCommand([lastRow](CKVRenderContext*) { lastRow->resize(1); return true; }),
        broken,
        new ProbeCommand([](CKVRenderContext*) -> bool { throw std::runtime_error("faulty command"); }),
        new ProbeCommand([lastRow, kept](CKVRenderContext*) {
            lastRow->assign(kept->begin(), kept->end());
            return true;
        }),
        mended,
    };
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    for (auto& command : commands)
        cache->write(command.get());
    ASSERT_TRUE(cache->submitAndWait(mended.get(), 10000));

    for (auto& command : commands)
        EXPECT_TRUE(command->isSignalled());
    EXPECT_EQ(broken->getSelection(), nullptr);
    ASSERT_NE(mended->getSelection(), nullptr);
    EXPECT_EQ(mended->getSelection()->getDrawable(), a.get());
    EXPECT_TRUE(waitForFrames(mCounter->frames() + 2)) << "frames go on";
}
