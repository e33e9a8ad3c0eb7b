#include "TestEffects.h"

#include "effects/CKVPostProcessNode.h"
#include "environment/CBGGeode.h"
#include "viewer/CKVOSGCamera.h"

#include <osg/Geode>
#include <osg/ShapeDrawable>
#include <osgUtil/CullVisitor>
#include <osgUtil/RenderStage>
#include <osgUtil/StateGraph>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

using TestEffects::InvertGenerator;

osg::ref_ptr<CKVOSGCamera> makeMainCamera(int width = 200, int height = 100)
{
    osg::ref_ptr<CKVOSGCamera> camera = new CKVOSGCamera;
    camera->setViewport(0, 0, width, height);
    camera->setProjectionMatrixAsPerspective(60.0, 2.0, 0.01, 1000.0);
    camera->setViewMatrix(osg::Matrixd::lookAt(osg::Vec3d(0, -10, 0), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 0, 1)));
    return camera;
}

osg::ref_ptr<CKVPostProcessNode> makeRoot(CKVOSGCamera* camera)
{
    return new CKVPostProcessNode(camera, new osg::FloatArray(112), 0);
}

std::string fragmentSource(CKVPostProcessNode& root)
{
    return root.getProgram()->getShader(1)->getShaderSource();
}

// What one cull made. The render bins list the state graphs by plain
// pointer, and the root graph owns them: it is kept with the stage so that
// the bins can be read after the cull.
struct Culled
{
    osg::ref_ptr<osgUtil::RenderStage> stage;
    osg::ref_ptr<osgUtil::StateGraph> graph;
    osgUtil::RenderStage* operator->() const { return stage.get(); }
    osgUtil::RenderStage& operator*() const { return *stage; }
};

// One cull of `root` as the main camera's scene, without GL, returned for
// inspection.
Culled cull(osg::Node& root, osg::Camera& camera)
{
    osg::ref_ptr<osgUtil::CullVisitor> visitor = new osgUtil::CullVisitor;
    osg::ref_ptr<osgUtil::StateGraph> graph = new osgUtil::StateGraph;
    osg::ref_ptr<osgUtil::RenderStage> stage = new osgUtil::RenderStage;
    stage->setCamera(&camera);
    stage->setViewport(camera.getViewport());
    visitor->setStateGraph(graph.get());
    visitor->setRenderStage(stage.get());
    visitor->pushViewport(camera.getViewport());
    visitor->pushProjectionMatrix(new osg::RefMatrix(camera.getProjectionMatrix()));
    visitor->pushModelViewMatrix(new osg::RefMatrix(camera.getViewMatrix()), osg::Transform::ABSOLUTE_RF);
    root.accept(*visitor);
    visitor->popModelViewMatrix();
    visitor->popProjectionMatrix();
    visitor->popViewport();
    return {stage, graph};
}

std::vector<osg::Camera const*> preRenderCameras(osgUtil::RenderStage& stage)
{
    std::vector<osg::Camera const*> cameras;
    for (auto const& entry : stage.getPreRenderList())
        cameras.push_back(entry.second->getCamera());
    return cameras;
}

// Drawables culled straight into the stage (not into a pre-render stage).
unsigned int leafCount(osgUtil::RenderStage& stage)
{
    unsigned int count = 0;
    std::function<void(osgUtil::RenderBin&)> walk = [&](osgUtil::RenderBin& bin) {
        count += static_cast<unsigned int>(bin.getRenderLeafList().size());
        for (osgUtil::StateGraph* graph : bin.getStateGraphList())
            count += static_cast<unsigned int>(graph->_leaves.size());
        for (auto& child : bin.getRenderBinList())
            walk(*child.second);
    };
    walk(stage);
    return count;
}

osg::ref_ptr<osg::Geode> box()
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Box(osg::Vec3(), 2.0f)));
    return geode;
}

TEST(CKVPostProcessChainTest, SceneTargetsFollowTheViewportAndWindowResizes)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera(200, 100);
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(main.get());
    osg::Camera::BufferAttachmentMap const& attachments = root->getBufferAttachmentMap();
    // Colour, silhouette, volumetric light and depth; velocity waits for
    // anti-aliasing.
    ASSERT_EQ(attachments.size(), 4u);
    EXPECT_EQ(attachments.at(osg::Camera::COLOR_BUFFER0)._texture.get(), root->getColorTexture());
    EXPECT_EQ(attachments.at(osg::Camera::COLOR_BUFFER2)._texture.get(), root->getSilhouetteTexture());
    EXPECT_EQ(attachments.at(osg::Camera::COLOR_BUFFER3)._texture.get(), root->getVolumetricLightTexture());
    EXPECT_EQ(attachments.at(osg::Camera::DEPTH_BUFFER)._texture.get(), root->getDepthTexture());
    EXPECT_EQ(root->getVelocityTexture(), nullptr);
    EXPECT_EQ(root->getDepthTexture()->getInternalFormat(), GL_DEPTH_COMPONENT24);
    EXPECT_EQ(root->getVolumetricLightTexture()->getFilter(osg::Texture::MAG_FILTER), osg::Texture::LINEAR);

    root->setTAAEnabled(true);
    ASSERT_NE(root->getVelocityTexture(), nullptr);
    EXPECT_EQ(root->getVelocityTexture()->getInternalFormat(), GL_RG16F);
    EXPECT_EQ(attachments.at(osg::Camera::COLOR_BUFFER1)._texture.get(), root->getVelocityTexture());

    osg::ref_ptr<InvertGenerator> dof = new InvertGenerator(200, 100, 24);
    root->setDOFGenerator(dof.get());
    root->resize(0, 50);  // ignored
    root->resize(64, 48);
    for (auto const& entry : attachments) {
        osg::Texture2D const* texture = dynamic_cast<osg::Texture2D const*>(entry.second._texture.get());
        ASSERT_NE(texture, nullptr);
        EXPECT_EQ(texture->getTextureWidth(), 64) << entry.first;
        EXPECT_EQ(texture->getTextureHeight(), 48) << entry.first;
    }
    EXPECT_EQ(root->getViewport()->width(), 64);
    EXPECT_EQ(dof->getOutput()->getTextureWidth(), 64);
    EXPECT_EQ(dof->getOutput()->getTextureHeight(), 48);
    EXPECT_EQ(dof->getViewport()->width(), 64);
}

TEST(CKVPostProcessChainTest, WindowWithoutSizeGivesFallbackTargets)
{
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(makeMainCamera(0, 0).get());
    EXPECT_EQ(root->getColorTexture()->getTextureWidth(), 100);
    EXPECT_EQ(root->getDepthTexture()->getTextureHeight(), 100);
    root->resize(30, 20);
    EXPECT_EQ(root->getColorTexture()->getTextureWidth(), 30);
}

TEST(CKVPostProcessChainTest, ColourGradingAloneActivatesTheChainAndMakesTheTableOnce)
{
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(makeMainCamera().get());
    osg::StateSet* quadState = root->getQuad()->getStateSet();
    EXPECT_FALSE(root->isActive());
    EXPECT_FALSE(root->isLUTCreated());
    EXPECT_FALSE(root->setColorGrading("/nonexistent/table.png"));  // no table yet

    root->setColorGradingEnabled(true);
    EXPECT_TRUE(root->isActive());
    EXPECT_TRUE(root->isLUTCreated());
    EXPECT_EQ(quadState->getTextureAttribute(1, osg::StateAttribute::TEXTURE), root->getLUTTexture());
    int unit = -1;
    ASSERT_NE(quadState->getUniform("texLUT"), nullptr);
    quadState->getUniform("texLUT")->get(unit);
    EXPECT_EQ(unit, 1);
    EXPECT_EQ(quadState->getTextureAttribute(0, osg::StateAttribute::TEXTURE), root->getColorTexture());
    EXPECT_NE(root->getStateSet()->getDefinePair("_USE_COLOR_GRADING"), nullptr);
    // Without a table image the final pass does not grade (it would draw black).
    EXPECT_EQ(root->getDefinesText(), "");
    EXPECT_EQ(fragmentSource(*root).find("#define _USE_COLOR_GRADING\n"), std::string::npos);

    osg::Texture2D* table = root->getLUTTexture();
    root->setColorGradingEnabled(false);
    EXPECT_FALSE(root->isActive());
    EXPECT_EQ(root->getStateSet()->getDefinePair("_USE_COLOR_GRADING"), nullptr);
    EXPECT_EQ(fragmentSource(*root).find("_USE_COLOR_GRADING\n#"), std::string::npos);
    root->setColorGradingEnabled(true);
    // Same table, still on unit 1: switching again does not take a new unit.
    EXPECT_EQ(root->getLUTTexture(), table);
    EXPECT_EQ(quadState->getTextureAttribute(2, osg::StateAttribute::TEXTURE), nullptr);
    // A missing file keeps the table as it was.
    EXPECT_FALSE(root->setColorGrading("/nonexistent/table.png"));
    EXPECT_EQ(table->getImage(), nullptr);
}

TEST(CKVPostProcessChainTest, SourceIsRewrittenOnlyForDefinesTheFinalPassReads)
{
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(makeMainCamera().get());
    std::string const initial = fragmentSource(*root);

    // Edges are not read by the final pass: relinked and active, same source.
    root->setSilhouetteEnabled(true);
    EXPECT_TRUE(root->isActive());
    EXPECT_EQ(fragmentSource(*root), initial);
    EXPECT_EQ(root->getDefinesText(), "");

    // A shadow level change with volumetric light on: the render context
    // rebuilds, and the new define goes in, in name order.
    root->setVolumetricLightEnabled(true);
    root->getStateSet()->setDefine("_USE_SHADOW");
    root->rebuildProgram();
    EXPECT_EQ(root->getDefinesText(), "#define _USE_SHADOW\n#define _USE_VOLUMETRICLIGHT\n");
    EXPECT_EQ(fragmentSource(*root).rfind("#version 420 core\n#define _USE_SHADOW\n", 0), 0u);
    root->setSilhouetteEnabled(false);
    EXPECT_EQ(root->getDefinesText(), "#define _USE_SHADOW\n#define _USE_VOLUMETRICLIGHT\n");
}

TEST(CKVPostProcessChainTest, ChainRunsInFixedOrderWhateverIsSwitchedOn)
{
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(makeMainCamera().get());
    osg::ref_ptr<InvertGenerator> silhouette = new InvertGenerator(200, 100, 21);
    osg::ref_ptr<InvertGenerator> taa = new InvertGenerator(200, 100, 22);
    osg::ref_ptr<InvertGenerator> light = new InvertGenerator(200, 100, 23);
    osg::ref_ptr<InvertGenerator> dof = new InvertGenerator(200, 100, 24);
    root->setSilhouetteGenerator(silhouette.get());
    root->setTAAGenerator(taa.get());
    root->setVolumetricLightGenerator(light.get());
    root->setDOFGenerator(dof.get());
    auto shown = [&] {
        return root->getQuad()->getStateSet()->getTextureAttribute(0, osg::StateAttribute::TEXTURE);
    };
    osg::Texture2D* colour = root->getColorTexture();
    EXPECT_EQ(shown(), colour);

    root->setDOFEnabled(true);
    root->setSilhouetteEnabled(true);
    EXPECT_EQ(silhouette->getInput(), colour);
    EXPECT_EQ(dof->getInput(), silhouette->getOutput());
    EXPECT_EQ(light->getInput(), colour);
    EXPECT_EQ(shown(), dof->getOutput());

    root->setVolumetricLightEnabled(true);
    EXPECT_EQ(light->getInput(), silhouette->getOutput());
    EXPECT_EQ(dof->getInput(), light->getOutput());

    root->setTAAEnabled(true);
    EXPECT_EQ(taa->getInput(), silhouette->getOutput());
    EXPECT_EQ(light->getInput(), taa->getOutput());

    // Off again: the next effect goes back to what is before it.
    root->setSilhouetteEnabled(false);
    root->setVolumetricLightEnabled(false);
    EXPECT_EQ(taa->getInput(), colour);
    EXPECT_EQ(dof->getInput(), taa->getOutput());
    EXPECT_EQ(silhouette->getInput(), colour);
    root->setDOFEnabled(false);
    EXPECT_EQ(shown(), taa->getOutput());
    root->setTAAEnabled(false);
    EXPECT_EQ(shown(), colour);
    EXPECT_FALSE(root->isActive());
}

TEST(CKVPostProcessChainTest, StepsAsideWhenNothingIsOnAndPassesInOrderWhenActive)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera();
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(main.get());
    root->addChild(box());
    osg::ref_ptr<InvertGenerator> light = new InvertGenerator(200, 100, 23);
    osg::ref_ptr<InvertGenerator> silhouette = new InvertGenerator(200, 100, 21);
    root->setVolumetricLightGenerator(light.get());
    root->setSilhouetteGenerator(silhouette.get());

    Culled stage = cull(*root, *main);
    EXPECT_TRUE(stage->getPreRenderList().empty());
    // The box, straight into the window's stage; no final triangle.
    EXPECT_EQ(leafCount(*stage), 1u);

    root->setVolumetricLightEnabled(true);
    root->setSilhouetteEnabled(true);
    stage = cull(*root, *main);
    std::vector<osg::Camera const*> const expected = {root.get(), silhouette.get(), light.get()};
    EXPECT_EQ(preRenderCameras(*stage), expected);
    // Only the final triangle in the window's stage.
    EXPECT_EQ(leafCount(*stage), 1u);
    osgUtil::RenderStage* scenePass = stage->getPreRenderList().front().second.get();
    // The box and the draw-buffer selection.
    EXPECT_EQ(leafCount(*scenePass), 2u);
}

TEST(CKVPostProcessChainTest, JitterAndHistoryFollowTheFrames)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera(200, 100);
    osg::FloatArray* block = new osg::FloatArray(112);
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(main.get(), block, 0);
    root->addChild(box());

    // Anti-aliasing without a table moves nothing (and must not divide by 0).
    root->setTAAEnabled(true);
    cull(*root, *main);
    osg::Matrixd const unjittered = main->getCullProjection();
    EXPECT_EQ(root->getFrameHistory().getJitter(), osg::Vec2d());

    root->setJitterSamples({osg::Vec2d(0.5, -0.25), osg::Vec2d(-0.5, 0.25)});
    cull(*root, *main);
    EXPECT_NEAR(main->getCullProjection()(2, 0), unjittered(2, 0) - 0.5 / 200.0, 1e-12);
    EXPECT_NEAR(main->getCullProjection()(2, 1), unjittered(2, 1) + 0.25 / 100.0, 1e-12);
    cull(*root, *main);
    EXPECT_EQ(root->getFrameHistory().getLastJitter(), osg::Vec2d(0.5 / 200.0, -0.25 / 100.0));
    osg::Vec4f jitter;
    root->getStateSet()->getUniform("current_prev_jitter")->get(jitter);
    EXPECT_FLOAT_EQ(jitter.x(), -0.5f / 200.0f);
    EXPECT_FLOAT_EQ(jitter.z(), 0.5f / 200.0f);

    // Last frame's view sits at float 64 of the block, the view of the
    // frame before this one.
    osg::Matrixd const firstView = main->getViewMatrix();
    main->setViewMatrix(osg::Matrixd::lookAt(osg::Vec3d(3, -10, 0), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 0, 1)));
    cull(*root, *main);
    osg::Matrixf const lastView = root->getFrameHistory().getLastView();
    EXPECT_TRUE(lastView == osg::Matrixf(main->getViewMatrix()));
    cull(*root, *main);
    osg::Matrixf const firstF(firstView);
    EXPECT_FLOAT_EQ((*block)[CKVFrameHistory::kHistoryFirstFloat + 12], osg::Matrixf(main->getViewMatrix())(3, 0));
    EXPECT_NE((*block)[CKVFrameHistory::kHistoryFirstFloat + 12], firstF(3, 0));
}

TEST(CKVPostProcessChainTest, SunOnScreenFollowsTheViewOnlyWithVolumetricLight)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera(200, 100);
    osg::ref_ptr<CKVPostProcessNode> root = makeRoot(main.get());
    // The camera looks along +y; the sun straight ahead is the screen centre.
    root->setLightPosition(osg::Vec3f(0.0f, 1.0f, 0.0f));
    osg::Vec2f onScreen(-1.0f, -1.0f);
    cull(*root, *main);
    root->getLightPositionScreenUniform()->get(onScreen);
    EXPECT_EQ(onScreen, osg::Vec2f(0.0f, 0.0f));

    root->setVolumetricLightEnabled(true);
    // Moving the camera does not move a sun infinitely far away.
    main->setViewMatrix(osg::Matrixd::lookAt(osg::Vec3d(50, -10, 7), osg::Vec3d(50, 0, 7), osg::Vec3d(0, 0, 1)));
    cull(*root, *main);
    root->getLightPositionScreenUniform()->get(onScreen);
    EXPECT_NEAR(onScreen.x(), 0.5f, 1e-5f);
    EXPECT_NEAR(onScreen.y(), 0.5f, 1e-5f);
}

} // namespace
} // namespace Kelvor
