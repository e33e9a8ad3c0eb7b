#include "effects/CKVPostProcessNode.h"

#include "effects/CKVDOFGenerator.h"
#include "effects/CKVDrawBufferSelect.h"
#include "effects/CKVEffectChain.h"
#include "effects/CKVFinalPass.h"
#include "effects/CKVFullScreenGenerator.h"
#include "effects/CKVSceneRenderTargets.h"
#include "effects/CKVSSAOGenerator.h"
#include "effects/CKVHiZGenerator.h"
#include "effects/CKVShadowGenerator.h"
#include "effects/CKVSilhouetteGenerator.h"
#include "environment/CBGGeode.h"
#include "environment/CKVAtmosphericScatttering.h"
#include "programs/CKVProgramManager.h"
#include "scene/CKVOSGTransformNode.h"
#include "scene/CKVSceneNodeImp.h"
#include "viewer/CKVGISCamera.h"
#include "viewer/CKVOSGCamera.h"

#include "TarnwickRender/CKVRenderConfig.h"

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
constexpr unsigned int kSmallFeatureCullingBit = osg::CullSettings::SMALL_FEATURE_CULLING;
// A host node with this name is a background and is drawn by the GIS camera.
char const* const kGISBackGroundName = "KV_GISBackGround";
// The draw-buffer selection must come before anything else of the pass.
constexpr int kDrawBufferBin = -100000;
char const* const kWhiteColorDefine = "_USE_WHITE_COLOR";

} // namespace

CKVPostProcessNode::CKVPostProcessNode(CKVOSGCamera* mainCamera, osg::FloatArray* cameraInfo, int samples)
    : mMainCamera(mainCamera)
    , mCameraInfo(cameraInfo)
    , mLightPosition(0.0f, 0.0f, 1.0f)
    , mHistory(cameraInfo)
    , mGISGroup(new osg::Group)
    , mSamples(samples)
{
    setName("PostProcessCamera");
    copyMainCameraSettings();

    osg::Viewport const* viewport = mMainCamera.valid() ? mMainCamera->getViewport() : nullptr;
    mTargets.reset(new CKVSceneRenderTargets(viewport ? viewport->width() : 0.0, viewport ? viewport->height() : 0.0,
                                             samples));
    mTargets->attachTo(*this);
    if (!viewport)
        setViewport(0, 0, mTargets->getWidth(), mTargets->getHeight());
    mFinalPass.reset(new CKVFinalPass);
    mSilhouetteGenerator = new CKVSilhouetteGenerator(mTargets->getSilhouetteTexture(), mTargets->getDepthTexture(),
                                                      mTargets->getWidth(), mTargets->getHeight());
    mDOFGenerator = new CKVDOFGenerator(mTargets->getDepthTexture(), mTargets->getWidth(), mTargets->getHeight());

    mDrawBufferSelect = new CKVDrawBufferSelect;
    mDrawBufferGeode = new CBGGeode;
    mDrawBufferGeode->addDrawable(mDrawBufferSelect.get());
    mDrawBufferGeode->getOrCreateStateSet()->setRenderBinDetails(kDrawBufferBin, "RenderBin");

    osg::StateSet* stateSet = getOrCreateStateSet();
    mLightPositionScreenUniform = new osg::Uniform("lightPositionScreen", osg::Vec2f(0.0f, 0.0f));
    stateSet->addUniform(mLightPositionScreenUniform.get());
    stateSet->addUniform(mHistory.getJitterUniform());

    rebuildProgram();
    relinkChain();
    mNearFarUniform = new osg::Uniform("nearFar", osg::Vec2f(0.0f, 0.0f));
    stateSet->addUniform(mNearFarUniform.get());
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

osg::Texture2D* CKVPostProcessNode::getColorTexture() const { return mTargets->getColorTexture(); }
osg::Texture2D* CKVPostProcessNode::getVelocityTexture() const { return mTargets->getVelocityTexture(); }
osg::Texture2D* CKVPostProcessNode::getSilhouetteTexture() const { return mTargets->getSilhouetteTexture(); }
osg::Texture2D* CKVPostProcessNode::getVolumetricLightTexture() const { return mTargets->getVolumetricLightTexture(); }
osg::Texture2D* CKVPostProcessNode::getDepthTexture() const { return mTargets->getDepthTexture(); }
CBGGeode* CKVPostProcessNode::getQuad() const { return mFinalPass->getQuad(); }
osg::Program* CKVPostProcessNode::getProgram() const { return mFinalPass->getProgram(); }
std::string const& CKVPostProcessNode::getDefinesText() const { return mFinalPass->getDefinesText(); }
bool CKVPostProcessNode::isLUTCreated() const { return mFinalPass->isLUTCreated(); }
osg::Texture2D* CKVPostProcessNode::getLUTTexture() const { return mFinalPass->getLUTTexture(); }

void CKVPostProcessNode::switchEffect(bool& flag, bool enabled, char const* define, bool recompileSurfaces)
{
    if (flag == enabled)
        return;
    flag = enabled;
    osg::StateSet* stateSet = getOrCreateStateSet();
    if (enabled)
        stateSet->setDefine(define, osg::StateAttribute::ON);
    else
        stateSet->removeDefine(define);
    // Surface shaders write an extra output for these; the final pass reads
    // its own defines from the state set in rebuildProgram.
    if (recompileSurfaces)
        CKVProgramManager::instance().dirtyDefine(define);
    rebuildProgram();
    relinkChain();
}

void CKVPostProcessNode::setColorGradingEnabled(bool enabled)
{
    // The table exists from the first time grading is on, so that a table
    // image set later has a texture to go to.
    if (enabled)
        mFinalPass->createLUT();
    switchEffect(mColorGradingEnabled, enabled, "_USE_COLOR_GRADING", false);
}

void CKVPostProcessNode::setDOFEnabled(bool enabled)
{
    switchEffect(mDOFEnabled, enabled, "_USE_DOF", false);
}

void CKVPostProcessNode::setVolumetricLightEnabled(bool enabled)
{
    switchEffect(mVolumetricLightEnabled, enabled, "_USE_VOLUMETRICLIGHT", true);
}

void CKVPostProcessNode::setSilhouetteEnabled(bool enabled)
{
    switchEffect(mSilhouetteEnabled, enabled, "_USE_SILHOUETTE", true);
}

void CKVPostProcessNode::setTAAEnabled(bool enabled)
{
    // Motion vectors need their target before the first frame with them.
    if (enabled && !mTargets->getVelocityTexture())
    {
        mTargets->createVelocity(*this);
        mDrawBufferSelect->setVelocityAttached(true);
    }
    switchEffect(mTAAEnabled, enabled, "_USE_TAA", true);
}

void CKVPostProcessNode::applyRenderStyle(int style)
{
    setSilhouetteEnabled(style != CKVRenderConfig::kShaded);
    if (style != CKVRenderConfig::kShaded)
        setEdgeOnly(style == CKVRenderConfig::kEdgesOnly);
    osg::StateSet* stateSet = getOrCreateStateSet();
    if (style == CKVRenderConfig::kWhiteModelWithEdges)
        stateSet->setDefine(kWhiteColorDefine, osg::StateAttribute::ON);
    else
        stateSet->removeDefine(kWhiteColorDefine);
    CKVProgramManager::instance().dirtyDefine(kWhiteColorDefine);
}

CKVSilhouetteGenerator* CKVPostProcessNode::silhouette() const
{
    CKVFullScreenGenerator* generator = mSilhouetteGenerator.get();
    return generator && std::strcmp(generator->className(), "CKVSilhouetteGenerator") == 0
               ? static_cast<CKVSilhouetteGenerator*>(generator)
               : nullptr;
}

CKVDOFGenerator* CKVPostProcessNode::depthOfField() const
{
    CKVFullScreenGenerator* generator = mDOFGenerator.get();
    return generator && std::strcmp(generator->className(), "CKVDOFGenerator") == 0
               ? static_cast<CKVDOFGenerator*>(generator)
               : nullptr;
}

void CKVPostProcessNode::setDOFNearEnd(float value)
{
    if (CKVDOFGenerator* generator = depthOfField())
        generator->setNearEnd(value);
}

void CKVPostProcessNode::setDOFFarBegin(float value)
{
    if (CKVDOFGenerator* generator = depthOfField())
        generator->setFarBegin(value);
}

void CKVPostProcessNode::setDOFBlurSize(float value)
{
    if (CKVDOFGenerator* generator = depthOfField())
        generator->setBlurSize(value);
}

void CKVPostProcessNode::setEdgeColor(osg::Vec4f const& color)
{
    if (CKVSilhouetteGenerator* generator = silhouette())
        generator->setEdgeColor(color);
}

void CKVPostProcessNode::setEdgeOnlyBackgroundColor(osg::Vec3f const& color)
{
    if (CKVSilhouetteGenerator* generator = silhouette())
        generator->setEdgeOnlyBackgroundColor(color);
}

void CKVPostProcessNode::setEdgeOnly(bool edgeOnly)
{
    if (CKVSilhouetteGenerator* generator = silhouette())
        generator->setEdgeOnly(edgeOnly);
}

bool CKVPostProcessNode::setColorGrading(std::string const& imagePath)
{
    if (!mFinalPass->setLUTImage(imagePath))
        return false;
    // The first table switches grading on in the final pass.
    rebuildProgram();
    return true;
}

void CKVPostProcessNode::setGenerator(osg::ref_ptr<CKVFullScreenGenerator>& slot, CKVFullScreenGenerator* generator)
{
    slot = generator;
    relinkChain();
}

void CKVPostProcessNode::setSilhouetteGenerator(CKVFullScreenGenerator* generator)
{
    setGenerator(mSilhouetteGenerator, generator);
}

void CKVPostProcessNode::setTAAGenerator(CKVFullScreenGenerator* generator)
{
    setGenerator(mTAAGenerator, generator);
}

void CKVPostProcessNode::setVolumetricLightGenerator(CKVFullScreenGenerator* generator)
{
    setGenerator(mVolumetricLightGenerator, generator);
}

void CKVPostProcessNode::setDOFGenerator(CKVFullScreenGenerator* generator)
{
    setGenerator(mDOFGenerator, generator);
}

void CKVPostProcessNode::setShadowGenerator(CKVShadowGenerator* generator)
{
    if (generator == mShadow.get())
        return;
    if (mShadow.valid())
        removeChild(mShadow.get());
    mShadow = generator;
    // First among the children, as the effects that prepare the scene
    // pass's inputs are; the order of the passes themselves comes from
    // their render order numbers.
    if (mShadow.valid())
        insertChild(0, mShadow.get());
}

void CKVPostProcessNode::setSSAOGenerator(CKVSSAOGenerator* generator)
{
    if (generator == mSSAO.get())
        return;
    if (mSSAO.valid())
        removeChild(mSSAO.get());
    mSSAO = generator;
    if (!mSSAO.valid())
        return;
    // Right after the shadows when they are there, else first.
    unsigned int const index = mShadow.valid() ? getChildIndex(mShadow.get()) + 1 : 0;
    insertChild(std::min(index, getNumChildren()), mSSAO.get());
}

void CKVPostProcessNode::setAtmosphere(CKVAtmosphericScatttering* atmosphere)
{
    mAtmosphere = atmosphere;
}

void CKVPostProcessNode::setHiZGenerator(CKVHiZGenerator* generator)
{
    if (generator == mHiZ.get())
        return;
    if (mHiZ.valid())
        removeChild(mHiZ.get());
    mHiZ = generator;
    if (!mHiZ.valid())
        return;
    unsigned int const shadowAt = mShadow.valid() ? getChildIndex(mShadow.get()) : getNumChildren();
    insertChild(shadowAt < getNumChildren() ? shadowAt : 0, mHiZ.get());
}

void CKVPostProcessNode::relinkChain()
{
    mActive = mTAAEnabled || mSilhouetteEnabled || mVolumetricLightEnabled || mColorGradingEnabled || mDOFEnabled;
    CKVEffectChain::Stage const stages[CKVEffectChain::kStageCount] = {
        {mSilhouetteGenerator.get(), mSilhouetteEnabled},
        {mTAAGenerator.get(), mTAAEnabled},
        {mVolumetricLightGenerator.get(), mVolumetricLightEnabled},
        {mDOFGenerator.get(), mDOFEnabled},
    };
    mFinalPass->setInput(CKVEffectChain::link(stages, mTargets->getColorTexture()));
}

void CKVPostProcessNode::rebuildProgram()
{
    mFinalPass->rebuildProgram(getOrCreateStateSet());
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

void CKVPostProcessNode::setGISCamera(CKVGISCamera* camera)
{
    if (camera == mGISCamera.get())
        return;
    if (mGISCamera.valid())
        mGISCamera->removeChild(mGISGroup.get());
    mGISCamera = camera;
    if (mGISCamera.valid())
        mGISCamera->addChild(mGISGroup.get());
}

void CKVPostProcessNode::resize(int width, int height)
{
    if (width == 0 || height == 0)
        return;
    for (CKVFullScreenGenerator* generator :
         {mSilhouetteGenerator.get(), mTAAGenerator.get(), mVolumetricLightGenerator.get(), mDOFGenerator.get()})
    {
        if (generator)
            generator->resize(width, height);
    }
    if (mHiZ.valid())
        mHiZ->resize(static_cast<unsigned int>(width), static_cast<unsigned int>(height));
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
    if (mTAAEnabled)
        if (osg::Viewport const* viewport = cullVisitor.getViewport())
            mHistory.applyJitter(*projection, *viewport);
    // Stored every frame, clamped or not: turning a depth read back from
    // this frame into a position needs the projection it was drawn with.
    if (mMainCamera.valid())
        mMainCamera->setCullProjection(*projection);

    osg::Matrixf const view(*modelView);
    osg::Matrixf const projectionF(*projection);
    // Only anti-aliasing reads last frame's matrices from the block; the
    // matrices are kept either way, so switching it on starts from the
    // right history.
    mHistory.writeAndAdvance(view, projectionF, mTAAEnabled);
}

void CKVPostProcessNode::updateSunOnScreen()
{
    if (!mMainCamera.valid() || !mMainCamera->getViewport())
        return;
    osg::Viewport const& viewport = *mMainCamera->getViewport();
    // Rotation only: the sun is a direction, infinitely far away.
    osg::Matrixd view = mMainCamera->getViewMatrix();
    view.setTrans(0.0, 0.0, 0.0);
    osg::Matrixd const toWindow = view * mMainCamera->getProjectionMatrix() * viewport.computeWindowMatrix();
    osg::Vec3d const onWindow = osg::Vec3d(mLightPosition) * toWindow;
    mLightPositionScreenUniform->set(osg::Vec2f(static_cast<float>(onWindow.x() / viewport.width()),
                                                static_cast<float>(onWindow.y() / viewport.height())));
}

void CKVPostProcessNode::accept(osg::NodeVisitor& visitor)
{
    osgUtil::CullVisitor* cullVisitor = visitor.asCullVisitor();
    if (cullVisitor) {
        clampNearFar(*cullVisitor);
        if (mVolumetricLightEnabled)
            updateSunOnScreen();
    }

    if (mActive && cullVisitor) {
        // The scene into the targets: this node as a pre-render camera.
        if (visitor.validNodeMask(*this)) {
            visitor.pushOntoNodePath(this);
            cullVisitor->apply(static_cast<osg::Camera&>(*this));
            visitor.popFromNodePath();
        }
        CKVFullScreenGenerator* const chain[] = {mSilhouetteEnabled ? mSilhouetteGenerator.get() : nullptr,
                                                 mTAAEnabled ? mTAAGenerator.get() : nullptr,
                                                 mVolumetricLightEnabled ? mVolumetricLightGenerator.get() : nullptr,
                                                 mDOFEnabled ? mDOFGenerator.get() : nullptr};
        for (CKVFullScreenGenerator* generator : chain) {
            if (!generator)
                continue;
            cullVisitor->pushStateSet(getOrCreateStateSet());
            generator->accept(visitor);
            cullVisitor->popStateSet();
        }
        // Lands in the main camera's own stage, after every pre-render one.
        mFinalPass->getQuad()->accept(visitor);
        return;
    }
    // No effect is on: the scene goes as an ordinary group into the stage
    // of the main camera, and the targets of the scene pass stay unused.
    // Other visitors always see a group: an intersection visitor would take
    // this node's own (identity) projection and viewport for the window's.
    osg::Group::accept(visitor);
}

void CKVPostProcessNode::releaseGLObjects(osg::State* state) const
{
    osg::Camera::releaseGLObjects(state);
    for (CKVFullScreenGenerator const* generator :
         {mSilhouetteGenerator.get(), mTAAGenerator.get(), mVolumetricLightGenerator.get(), mDOFGenerator.get()})
    {
        if (generator)
            generator->releaseGLObjects(state);
    }
    mFinalPass->getQuad()->releaseGLObjects(state);
    mDrawBufferGeode->releaseGLObjects(state);
    for (auto const& entry : getBufferAttachmentMap())
    {
        if (entry.second._texture.valid())
            entry.second._texture->releaseGLObjects(state);
    }
}

void CKVPostProcessNode::traverse(osg::NodeVisitor& visitor)
{
    if (mActive && visitor.asCullVisitor())
        mDrawBufferGeode->accept(visitor);
    osg::Camera::traverse(visitor);
}

} // namespace Kelvor
