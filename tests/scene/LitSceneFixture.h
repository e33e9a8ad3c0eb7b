#pragma once

#include "MaterialTestSupport.h"

#include "binding/RenderContextFixture.h"
#include "support/GoldenImage.h"

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCApplyRenderConfig.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"
#include "TarnwickRender/CKVTransformState.h"

#include <osgDB/ReadFile>

#include <cstdio>
#include <string>
#include <vector>

namespace Kelvor {

// A lit scene on a live render context driven only by host commands: a sky
// colour, a perspective camera looking at the origin, nodes sent through
// the host's command cache, frames captured the way a host captures them.
// A test names its picture size and camera, and sets its light in
// configure().
class LitSceneFixture : public RenderContextFixture
{
protected:
    struct View
    {
        unsigned int width;
        unsigned int height;
        CKVPoint3D eye;
        CKVPoint3D target;
    };

    explicit LitSceneFixture(View const& view) : mView(view) {}

    // The light and render switches the scene starts with.
    virtual void configure(CKVRenderConfig& config) = 0;

    void SetUp() override
    {
        RenderContextFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        CKVBackGroundConfig background;
        background.setBackGroundColor(CKVPoint3D(0.55, 0.65, 0.8));
        mConfig.setBackGroundConfig(background);
        configure(mConfig);
        mScene.setRenderConfig(mConfig);
        ASSERT_NE(start(), nullptr);
        takeOverTicks();

        mCamera.setProjectMode(CKVCamera::kPerspective);
        mCamera.setFieldOfView(40.0);
        mCamera.setAspect(double(mView.width) / mView.height);
        mCamera.setNearFar(0.5, 100.0);
        mCamera.setLookAt(mView.eye, mView.target, CKVVector3D(0.0, 0.0, 1.0));
        send(new CKVRCApplyCamera(mCamera));
    }

    // Commands go through the host's cache and are drained by the next tick.
    void send(CKVRenderCommand* command)
    {
        kv_shared_ptr<CKVRenderCommand> held(command);
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        cache->write(held.get());
        cache->finish();
        mContext->onTick(++mTickMs);
    }

    void applyConfig() { send(new CKVRCApplyRenderConfig(mConfig)); }

    // A node holding `shapes` (the first the part, the others its
    // instances) at `position`, with the material's program plus `param`'s
    // switches, and `extra` state (owned by the node) when given.
    kv_shared_ptr<CKVSceneNode> addNode(CKVBasicMaterial* material,
                                        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& shapes,
                                        CKVPoint3D const& position, CKVProgramParam param = CKVProgramParam(),
                                        CKVSceneNodeState* extra = nullptr)
    {
        kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
        material->getProgramParam(param);
        node->setProgramParam(param);
        node->getStateSet()->addState(new CKVMaterialState(material));
        CKVTransformState* transform = new CKVTransformState;
        transform->setTransformMode(CKVTransformState::kMatrix);
        transform->setMatrix(CKVMatrix3D::translation(CKVVector3D(position.x, position.y, position.z)));
        node->getStateSet()->addState(transform);
        if (extra)
            node->getStateSet()->addState(extra);

        kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
        for (auto const& shape : shapes)
            EXPECT_TRUE(geometry->addLogicBuffer(shape.get()));
        send(new CKVRCInsertRenderObject(node.get(), geometry.get()));
        send(new CKVRCAttachSceneData(node.get()));
        mKeep.insert(mKeep.end(), shapes.begin(), shapes.end());
        mGeometries.push_back(geometry);
        mNodes.push_back(node);
        return node;
    }

    // The frame as the host's capture writes it.
    osg::ref_ptr<osg::Image> capture()
    {
        for (int i = 0; i < 2; ++i)
            mContext->onTick(++mTickMs);
        std::string const path = mFolder.file("capture.png");
        std::remove(path.c_str());
        bool written = false;
        CKVCamera const camera = mCamera;
        CKVVec2<unsigned int> const size(mView.width, mView.height);
        EXPECT_TRUE(tickWith(
            [&](CKVRenderContext* context) { return context->getCapture(path.c_str(), size, camera, false); },
            &written));
        EXPECT_TRUE(written);
        return written ? osgDB::readRefImageFile(path) : nullptr;
    }

    void expectGolden(osg::Image const& image, char const* name)
    {
        // llvmpipe is deterministic, but drivers of other machines round
        // shading a little differently; edges may move by a pixel.
        ImageTolerance const kTolerance{10, 0.01};
        expectMatchesGolden(image, name, kTolerance);
    }

    void expectGolden(char const* name)
    {
        osg::ref_ptr<osg::Image> image = capture();
        ASSERT_TRUE(image.valid());
        expectGolden(*image, name);
    }

    View const mView;
    MaterialTestSupport::TempFolder mFolder;
    CKVRenderConfig mConfig;
    CKVCamera mCamera;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mKeep;
    std::vector<kv_shared_ptr<CKVBufferGeometry>> mGeometries;
    std::vector<kv_shared_ptr<CKVSceneNode>> mNodes;
};

} // namespace Kelvor
