#include "SceneNodeTestScene.h"

#include "support/GLTest.h"

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVTransformState.h"

#include <osg/Image>

#include <vector>

namespace Kelvor {
namespace {

using namespace SceneNodeTestScene;

osg::Vec4 const kRed(1.0f, 0.0f, 0.0f, 1.0f);
osg::Vec4 const kGreen(0.0f, 1.0f, 0.0f, 1.0f);
osg::Vec4 const kBlue(0.0f, 0.0f, 1.0f, 1.0f);
osg::Vec4 const kWhite(1.0f, 1.0f, 1.0f, 1.0f);

// The viewer's own update, cull and draw of an unlit, flat-coloured scene.
class SceneNodeGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mRoot = new osg::Group;
        mRoot->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
        camera->setProjectionMatrixAsPerspective(45.0, 1.0, 0.1, 1000.0);
    }

    osg::ref_ptr<osg::Image> renderFrom(double distance)
    {
        context().camera()->setViewMatrixAsLookAt(osg::Vec3d(0.0, 0.0, distance), osg::Vec3d(),
                                                  osg::Vec3d(0.0, 1.0, 0.0));
        return context().renderFrames(mRoot.get(), 2);
    }

    // Pixels of the centre row that are not background.
    static int coveredWidth(osg::Image const& image)
    {
        int covered = 0;
        for (int x = 0; x < image.s(); ++x) {
            if (image.getColor(x, image.t() / 2).r() > 0.5f)
                ++covered;
        }
        return covered;
    }

    osg::ref_ptr<osg::Group> mRoot;
};

// The group's distance to the eye chooses one of three coloured levels.
TEST_F(SceneNodeGLTest, LevelGroupDrawsTheLevelOfTheCameraDistance)
{
    kv_shared_ptr<CKVSceneNodeImp> group = makeNode();
    auto* groupCulling = addState<CKVCullingState>(*group);
    groupCulling->setCullingMode(CKVRenderLOD::kEyeDistance);
    groupCulling->setCullingChild(true);

    float const bounds[] = {0.0f, 5.0f, 20.0f, 1000.0f};
    osg::Vec4 const colours[] = {kRed, kGreen, kBlue};
    std::vector<kv_shared_ptr<CKVSceneNodeImp>> levels;
    for (int i = 0; i < 3; ++i) {
        kv_shared_ptr<CKVSceneNodeImp> level = makeNode();
        level->getOSGNode()->addChild(makeQuad("level", 1.0f, 0.0f, colours[i]));
        addState<CKVCullingState>(*level)->setDistance(bounds[i], bounds[i + 1]);
        ASSERT_TRUE(group->addChildNode(level.get()));
        levels.push_back(level);
    }
    mRoot->addChild(group->getOSGNode());

    double const distances[] = {3.0, 10.0, 50.0};
    for (int i = 0; i < 3; ++i) {
        osg::ref_ptr<osg::Image> image = renderFrom(distances[i]);
        ASSERT_TRUE(image.valid()) << context().error();
        EXPECT_EQ(image->getColor(image->s() / 2, image->t() / 2), colours[i]) << "camera at " << distances[i];
    }
}

// An auto-scaled node keeps its size on screen as the camera moves away,
// and the host reads back the scale that the cull computed.
TEST_F(SceneNodeGLTest, AutoScaledNodeKeepsItsSizeOnScreen)
{
    kv_shared_ptr<CKVSceneNodeImp> node = makeNode();
    auto* transform = addState<CKVTransformState>(*node);
    transform->setTransformMode(CKVTransformState::kAutoTransform);
    transform->setAutoScale(true);
    node->getOSGNode()->addChild(makeQuad("marker", 12.0f, 0.0f, kWhite));
    mRoot->addChild(node->getOSGNode());

    osg::ref_ptr<osg::Image> near = renderFrom(10.0);
    ASSERT_TRUE(near.valid()) << context().error();
    double const nearScale = transform->getMatrix()(0, 0);
    osg::ref_ptr<osg::Image> far = renderFrom(40.0);
    ASSERT_TRUE(far.valid()) << context().error();
    double const farScale = transform->getMatrix()(0, 0);

    int const nearWidth = coveredWidth(*near);
    EXPECT_GT(nearWidth, 20);
    EXPECT_LT(nearWidth, near->s());
    EXPECT_NEAR(coveredWidth(*far), nearWidth, 1);
    EXPECT_NEAR(farScale / nearScale, 4.0, 0.01);
}

} // namespace
} // namespace Kelvor
