#include "effects/CKVSSAOGenerator.h"

#include "effects/CKVSSAOKernel.h"
#include "effects/CKVSSAOPrograms.h"
#include "environment/CBGGeode.h"
#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/CKVProgramManager.h"

#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include <algorithm>

namespace Kelvor {

char const* const CKVSSAOGenerator::kDefine = "_USE_SSAO";

namespace {

// Pre-render order: after the shadows (4, 5), before light propagation,
// water and the scene pass (19) that reads the result.
constexpr int kGeometryOrderNum = 7;
constexpr int kOcclusionOrderNum = 8;
constexpr int kBlurOrderNum = 9;
// Only draw and read buffer come from the main camera.
constexpr unsigned int kInheritanceMask = osg::CullSettings::DRAW_BUFFER | osg::CullSettings::READ_BUFFER;
// Position (1, 1, 1) where nothing is drawn; the occlusion pass reads its
// depth of 1 as "in front of everything".
osg::Vec4 const kClearColor(1.0f, 1.0f, 1.0f, 1.0f);
// The noise tile repeats every four target pixels.
constexpr float kNoiseScale = 1.0f / CKVSSAOKernel::kNoiseSize;
// Level 3 renders one and a half times the window's pixels on each axis.
constexpr double kSupersampleFactor = 1.5;

// The pass inputs' texture units, fixed by the programs' sampler uniforms.
constexpr int kPositionUnit = 0;
constexpr int kNormalUnit = 1;
constexpr int kNoiseUnit = 2;
constexpr int kOcclusionUnit = 0;

osg::ref_ptr<osg::Texture2D> target(unsigned int width, unsigned int height, GLint internalFormat,
                                    GLenum sourceFormat, osg::Texture::FilterMode filter)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setTextureSize(static_cast<int>(width), static_cast<int>(height));
    texture->setInternalFormat(internalFormat);
    texture->setSourceFormat(sourceFormat);
    texture->setSourceType(GL_FLOAT);
    texture->setFilter(osg::Texture::MIN_FILTER, filter);
    texture->setFilter(osg::Texture::MAG_FILTER, filter);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

osg::ref_ptr<CBGGeode> fullScreenGeode()
{
    osg::ref_ptr<CBGGeode> geode = new CBGGeode;
    geode->addDrawable(new CFullScreenTriangleGeometry);
    return geode;
}

void setProgram(osg::StateSet* stateSet, osg::Program* program, unsigned int extraMode)
{
    stateSet->setAttribute(program, osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE | extraMode);
}

} // namespace

CKVSSAOGenerator::CKVSSAOGenerator(osg::Camera* camera, osg::Group* root)
    : mRoot(root)
    , mCamera(camera)
{
    setName("SSAOGenerator");
    if (osg::Viewport const* viewport = camera ? camera->getViewport() : nullptr)
    {
        mWidth = std::max(static_cast<unsigned int>(viewport->width()), 1u);
        mHeight = std::max(static_cast<unsigned int>(viewport->height()), 1u);
    }
}

CKVSSAOGenerator::~CKVSSAOGenerator() = default;

void CKVSSAOGenerator::targetSize(int level, unsigned int width, unsigned int height, unsigned int& targetWidth,
                                  unsigned int& targetHeight)
{
    switch (level)
    {
    case 1:
        targetWidth = width / 2;
        targetHeight = height / 2;
        break;
    case 3:
        targetWidth = static_cast<unsigned int>(width * kSupersampleFactor);
        targetHeight = static_cast<unsigned int>(height * kSupersampleFactor);
        break;
    default:
        targetWidth = width;
        targetHeight = height;
        break;
    }
    // A window one pixel wide still gets a target.
    targetWidth = std::max(targetWidth, 1u);
    targetHeight = std::max(targetHeight, 1u);
}

bool CKVSSAOGenerator::setSSAOLevel(int level)
{
    if (level < 0 || level > kMaxLevel || level == mLevel)
        return false;
    bool const switched = (mLevel == 0) != (level == 0);
    osg::ref_ptr<osg::Group> root;
    mRoot.lock(root);
    if (level == 0)
    {
        tearDown();
        if (root.valid())
            root->getOrCreateStateSet()->removeDefine(kDefine);
    }
    else
    {
        if (!mInitialised)
            setUp();
        if (root.valid())
            root->getOrCreateStateSet()->setDefine(kDefine);
    }
    // The surfaces read the result only in their occlusion variant.
    if (switched)
        CKVProgramManager::instance().dirtyDefine(kDefine);
    mLevel = level;
    resize(mWidth, mHeight);
    return switched;
}

void CKVSSAOGenerator::resize(unsigned int width, unsigned int height)
{
    if (width == 0 || height == 0)
        return;
    mWidth = width;
    mHeight = height;
    unsigned int targetWidth = width;
    unsigned int targetHeight = height;
    targetSize(mLevel, width, height, targetWidth, targetHeight);
    for (PassData* pass : {mGeometryPass.get(), mOcclusionPass.get(), mBlurPass.get()})
    {
        if (pass)
            pass->getCamera()->resize(static_cast<int>(targetWidth), static_cast<int>(targetHeight),
                                      osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS);
    }
    if (mNoiseScaleUniform.valid())
        mNoiseScaleUniform->set(osg::Vec2f(targetWidth * kNoiseScale, targetHeight * kNoiseScale));
}

void CKVSSAOGenerator::setUp()
{
    if (mInitialised)
        return;
    mNoiseScaleUniform = new osg::Uniform("noiseScale", osg::Vec2f(mWidth * kNoiseScale, mHeight * kNoiseScale));
    buildGeometryPass();
    buildOcclusionPass();
    buildBlurPass();
    publish();
    mInitialised = true;
}

void CKVSSAOGenerator::publish()
{
    mTextureUniform = new osg::Uniform("SSAO_Tx", static_cast<int>(kTextureUnit));
    osg::ref_ptr<osg::Group> root;
    if (!mRoot.lock(root))
        return;
    osg::StateSet* stateSet = root->getOrCreateStateSet();
    // Only the sampler reads it: no texturing mode to switch on.
    stateSet->setTextureAttribute(kTextureUnit, mBlurTexture.get());
    stateSet->addUniform(mTextureUniform.get());
}

void CKVSSAOGenerator::tearDown()
{
    if (!mInitialised)
        return;
    osg::ref_ptr<osg::Group> root;
    if (mRoot.lock(root))
    {
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        stateSet->removeTextureAttribute(kTextureUnit, osg::StateAttribute::TEXTURE);
        stateSet->removeUniform(mTextureUniform.get());
    }
    for (PassData* pass : {mGeometryPass.get(), mOcclusionPass.get(), mBlurPass.get()})
        removePass(pass);
    mGeometryPass = nullptr;
    mOcclusionPass = nullptr;
    mBlurPass = nullptr;
    mPositionTexture = nullptr;
    mNormalTexture = nullptr;
    mOcclusionTexture = nullptr;
    mBlurTexture = nullptr;
    mNoiseTexture = nullptr;
    mKernelUniform = nullptr;
    mNoiseScaleUniform = nullptr;
    mTextureUniform = nullptr;
    mOcclusionGeode = nullptr;
    mBlurGeode = nullptr;
    mInitialised = false;
}

void CKVSSAOGenerator::setUpPassCamera(osg::Camera& camera, char const* name, int orderNum, osg::Texture2D* output)
{
    camera.setName(name);
    camera.attach(osg::Camera::COLOR_BUFFER0, output);
    camera.setViewport(0, 0, static_cast<int>(mWidth), static_cast<int>(mHeight));
    camera.setAllowEventFocus(false);
    camera.setRenderOrder(osg::Camera::PRE_RENDER, orderNum);
    camera.setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    camera.setClearColor(kClearColor);
    camera.setInheritanceMask(kInheritanceMask);
    camera.setColorMask(nullptr);
}

void CKVSSAOGenerator::buildGeometryPass()
{
    mPositionTexture = target(mWidth, mHeight, GL_RGB32F_ARB, GL_RGB, osg::Texture::NEAREST);
    mNormalTexture = target(mWidth, mHeight, GL_RGB32F_ARB, GL_RGB, osg::Texture::NEAREST);
    mGeometryPass = new PassData(*this, mRoot.get(), kVariantCount);
    osg::Camera* camera = mGeometryPass->getCamera();
    // The pass camera has its own depth buffer: no depth texture is needed.
    setUpPassCamera(*camera, "SSAOGeoCamera", kGeometryOrderNum, mPositionTexture.get());
    camera->attach(osg::Camera::COLOR_BUFFER1, mNormalTexture.get());
    // Seen from the main camera (relative frame): the same near and far
    // and the same culling, so that the maps hold what the scene pass draws.
    osg::ref_ptr<osg::Camera> mainCamera;
    if (mCamera.lock(mainCamera))
    {
        camera->setComputeNearFarMode(mainCamera->getComputeNearFarMode());
        camera->setCullingMode(mainCamera->getCullingMode());
        if (mainCamera->getCullingMode() & osg::CullSettings::SMALL_FEATURE_CULLING)
            camera->setSmallFeatureCullingPixelSize(mainCamera->getSmallFeatureCullingPixelSize());
    }
    camera->setReferenceFrame(osg::Transform::RELATIVE_RF);

    osg::StateSet* stateSet = mGeometryPass->getStateSet();
    // Translucent materials switch blending on: positions must not mix.
    stateSet->setMode(GL_BLEND, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    // A node's own program never applies: the pass's wins by override, and
    // the instanced one, protected, wins over the pass's.
    setProgram(stateSet, CKVSSAOPrograms::geometry(false).get(), 0);
    setProgram(mGeometryPass->getVariant(kInstancedVariant), CKVSSAOPrograms::geometry(true).get(),
               osg::StateAttribute::PROTECTED);
    addPass(mGeometryPass.get());
}

void CKVSSAOGenerator::buildOcclusionPass()
{
    mOcclusionTexture = target(mWidth, mHeight, GL_RGB32F_ARB, GL_RGB, osg::Texture::LINEAR);
    mOcclusionGeode = fullScreenGeode();
    mOcclusionPass = new PassData(*this, mOcclusionGeode.get());
    osg::Camera* camera = mOcclusionPass->getCamera();
    setUpPassCamera(*camera, "SSAOCamera", kOcclusionOrderNum, mOcclusionTexture.get());
    camera->setCullingMode(osg::CullSettings::NO_CULLING);

    // Drawn once: the kernel and the noise stay for as long as the passes.
    std::vector<osg::Vec3f> const kernel = CKVSSAOKernel::makeKernel(mRand);
    mKernelUniform = new osg::Uniform(osg::Uniform::FLOAT_VEC3, "gKernel", static_cast<int>(kernel.size()));
    for (unsigned int i = 0; i < kernel.size(); ++i)
        mKernelUniform->setElement(i, kernel[i]);
    mNoiseTexture = new osg::Texture2D(CKVSSAOKernel::makeNoise(mRand).get());
    mNoiseTexture->setInternalFormat(GL_RGB32F_ARB);
    mNoiseTexture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    mNoiseTexture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    mNoiseTexture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    mNoiseTexture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);

    osg::StateSet* stateSet = mOcclusionPass->getStateSet();
    setProgram(stateSet, CKVSSAOPrograms::occlusion().get(), 0);
    stateSet->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    stateSet->setTextureAttribute(kPositionUnit, mPositionTexture.get());
    stateSet->setTextureAttribute(kNormalUnit, mNormalTexture.get());
    stateSet->setTextureAttribute(kNoiseUnit, mNoiseTexture.get());
    stateSet->addUniform(new osg::Uniform("gPositionMap", kPositionUnit));
    stateSet->addUniform(new osg::Uniform("gNormalMap", kNormalUnit));
    stateSet->addUniform(new osg::Uniform("gNoiseMap", kNoiseUnit));
    stateSet->addUniform(mKernelUniform.get());
    stateSet->addUniform(mNoiseScaleUniform.get());
    addPass(mOcclusionPass.get());
}

void CKVSSAOGenerator::buildBlurPass()
{
    mBlurTexture = target(mWidth, mHeight, GL_RED, GL_RED, osg::Texture::LINEAR);
    mBlurGeode = fullScreenGeode();
    mBlurPass = new PassData(*this, mBlurGeode.get());
    osg::Camera* camera = mBlurPass->getCamera();
    setUpPassCamera(*camera, "SSAOBlurCamera", kBlurOrderNum, mBlurTexture.get());
    camera->setCullingMode(osg::CullSettings::NO_CULLING);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);

    osg::StateSet* stateSet = mBlurPass->getStateSet();
    setProgram(stateSet, CKVSSAOPrograms::blur().get(), 0);
    stateSet->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    stateSet->setTextureAttribute(kOcclusionUnit, mOcclusionTexture.get());
    stateSet->addUniform(new osg::Uniform("gSSAOMap", kOcclusionUnit));
    addPass(mBlurPass.get());
}

bool CKVSSAOGenerator::acceptsSceneNode(CKVSceneNode const& node, PassData const&) const
{
    auto const* option =
        static_cast<CKVRenderOptionState const*>(node.getStateSet()->getState(CKVSceneNodeState::kRenderOption));
    return option && option->hasRenderOption(CKVRenderOptionState::kAmbientOcclusion);
}

osg::StateSet* CKVSSAOGenerator::variantFor(CKVSceneNode const& node, PassData& pass) const
{
    CKVProgramParam const param = node.getProgramParam();
    if (param.getType() != CKVProgramParam::kNoProgram && param.hasParam(CKVProgramParam::kUseInstanceMatrix))
        return pass.getVariant(kInstancedVariant);
    return nullptr;
}

void CKVSSAOGenerator::releaseGLObjects(osg::State* state) const
{
    CKVSceneGenerator::releaseGLObjects(state);
    for (osg::Texture2D* texture : {mPositionTexture.get(), mNormalTexture.get(), mOcclusionTexture.get(),
                                    mBlurTexture.get(), mNoiseTexture.get()})
    {
        if (texture)
            texture->releaseGLObjects(state);
    }
    for (CBGGeode* geode : {mOcclusionGeode.get(), mBlurGeode.get()})
    {
        if (geode)
            geode->releaseGLObjects(state);
    }
}

} // namespace Kelvor
