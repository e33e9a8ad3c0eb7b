#include "effects/CKVPostProcessNode.h"

#include "scene/CKVOSGTransformNode.h"
#include "scene/CKVSceneNodeImp.h"
#include "viewer/CKVOSGCamera.h"

#include <osg/BoundingBox>
#include <osgUtil/CullVisitor>

#include <algorithm>
#include <cstring>

namespace Kelvor {

namespace {

// The scene pass runs after every pass that prepares its inputs (shadows,
// SSAO, light propagation, water) and before the full-screen chain.
constexpr int kSceneOrderNum = 19;
// The background passes cover the whole screen, so only depth is cleared.
constexpr GLbitfield kSceneClearMask = GL_DEPTH_BUFFER_BIT;
// Only draw and read buffer are inherited from the main camera; everything
// else the scene pass sets itself.
constexpr unsigned int kSceneInheritanceMask = osg::CullSettings::DRAW_BUFFER | osg::CullSettings::READ_BUFFER;
// The main camera's culling mode bit that asks for small-feature culling.
constexpr unsigned int kSmallFeatureCullingBit = 8;
// A host node with this name is a background and is drawn by the GIS camera.
char const* const kGISBackGroundName = "KV_GISBackGround";

} // namespace

CKVPostProcessNode::CKVPostProcessNode(CKVOSGCamera* mainCamera, osg::FloatArray* cameraInfo, int samples)
    : mMainCamera(mainCamera)
    , mCameraInfo(cameraInfo)
    , mLightPosition(0.0f, 0.0f, 1.0f)
    , mGISGroup(new osg::Group)
    , mSamples(samples)
{
    setName("PostProcessCamera");
    copyMainCameraSettings();

    mNearFarUniform = new osg::Uniform("nearFar", osg::Vec2f(0.0f, 0.0f));
    getOrCreateStateSet()->addUniform(mNearFarUniform.get());
}

CKVPostProcessNode::~CKVPostProcessNode() = default;

bool CKVPostProcessNode::isSameKindAs(osg::Object const* object) const
{
    return object && std::strcmp(object->className(), className()) == 0;
}

void CKVPostProcessNode::copyMainCameraSettings()
{
    setAllowEventFocus(false);
    setRenderOrder(osg::Camera::PRE_RENDER, kSceneOrderNum);
    setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    setClearMask(kSceneClearMask);
    setInheritanceMask(kSceneInheritanceMask);
    setColorMask(nullptr);
    if (!mMainCamera.valid())
        return;

    setClearColor(mMainCamera->getClearColor());
    if (mMainCamera->getClearMask() & GL_STENCIL_BUFFER_BIT)
        setClearStencil(0);
    setComputeNearFarMode(mMainCamera->getComputeNearFarMode());
    setCullingMode(mMainCamera->getCullingMode());
    if (mMainCamera->getCullingMode() & kSmallFeatureCullingBit)
        setSmallFeatureCullingPixelSize(mMainCamera->getSmallFeatureCullingPixelSize());
    if (osg::Viewport const* viewport = mMainCamera->getViewport())
        setViewport(new osg::Viewport(*viewport));
}

osg::Node* CKVPostProcessNode::osgNodeOf(CKVSceneNode* node)
{
    if (!node || !node->isKindOf(CKVSceneNodeImp::desc()))
        return nullptr;
    return static_cast<CKVSceneNodeImp*>(node)->getOSGNode();
}

bool CKVPostProcessNode::addSceneNode(CKVSceneNode* node)
{
    if (!node)
        return false;
    osg::Node* osgNode = osgNodeOf(node);
    if (!osgNode)
        return false;
    auto const found = std::find(mSceneNodes.begin(), mSceneNodes.end(), node);
    if (found != mSceneNodes.end())
        return true;

    mSceneNodes.push_back(node);
    if (std::strcmp(node->getName(), kGISBackGroundName) == 0)
        mGISGroup->addChild(osgNode);
    else
        addChild(osgNode);
    return true;
}

bool CKVPostProcessNode::removeSceneNode(CKVSceneNode* node)
{
    if (!node)
        return false;
    auto const found = std::find(mSceneNodes.begin(), mSceneNodes.end(), node);
    if (found == mSceneNodes.end())
        return false;

    if (osg::Node* osgNode = osgNodeOf(node)) {
        mGISGroup->removeChild(osgNode);
        removeChild(osgNode);
    }
    // Erased last: the list may hold the node's only reference.
    mSceneNodes.erase(found);
    return true;
}

void CKVPostProcessNode::resize(int width, int height)
{
    if (width == 0 || height == 0)
        return;
    osg::Camera::resize(width, height, osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS);
}

void CKVPostProcessNode::clampNearFar(osgUtil::CullVisitor& cullVisitor)
{
    osg::RefMatrix* modelView = cullVisitor.getModelViewMatrix();
    osg::RefMatrix* projection = cullVisitor.getProjectionMatrix();
    if (!modelView || !projection)
        return;

    osg::BoundingBox box;
    box.expandBy(getBound());
    // updateCalculatedNearFar is false when the whole scene lies behind the eye.
    if (box.valid() && cullVisitor.updateCalculatedNearFar(*modelView, box)) {
        osgUtil::CullVisitor::value_type zNear = cullVisitor.getCalculatedNearPlane();
        osgUtil::CullVisitor::value_type zFar = cullVisitor.getCalculatedFarPlane();
        // In place: the render leaves of this frame share the matrix, so they
        // draw with the clamped planes.
        if (cullVisitor.clampProjectionMatrix(*projection, zNear, zFar))
            mNearFarUniform->set(osg::Vec2f(static_cast<float>(zNear), static_cast<float>(zFar)));
    }
    // Stored every frame, clamped or not: turning a depth read back from
    // this frame into a position needs the projection it was drawn with.
    if (mMainCamera.valid())
        mMainCamera->setCullProjection(*projection);
}

void CKVPostProcessNode::accept(osg::NodeVisitor& visitor)
{
    if (osgUtil::CullVisitor* cullVisitor = visitor.asCullVisitor())
        clampNearFar(*cullVisitor);

    // No effect is on: the scene goes as an ordinary group into the stage
    // of the main camera, and the targets of the scene pass stay unused.
    if (!mActive)
        osg::Group::accept(visitor);
}

} // namespace Kelvor
