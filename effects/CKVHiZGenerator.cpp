#include "effects/CKVHiZGenerator.h"

#include "effects/HiZCallback.h"
#include "effects/HiZGeometry.h"
#include "effects/MemoryBarrierCallback.h"
#include "programs/CKVProgramManager.h"
#include "programs/CKVRenderStateManager.h"
#include "programs/KVShaderSource.h"
#include "scene/CKVOSGTransformNode.h"

#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <osg/ColorMask>
#include <osgUtil/CullVisitor>

#include <cstring>
#include <string>

namespace Kelvor {

char const* const CKVHiZGenerator::kScreenSizeUniform = "ScreenSize";
char const* const CKVHiZGenerator::kHiZMapUniform = "HiZMap";
char const* const CKVHiZGenerator::kHiZTestUniform = "HiZTest";

namespace {

// Pre-render order: the pre-pass before the shadow maps, culling after
// them (shadows draw with last frame's survivors), every later pass with
// this frame's.
constexpr int kDepthOrderNum = 3;
constexpr int kOcclusionOrderNum = 6;
// Only draw and read buffer come from the main camera.
constexpr unsigned int kInheritanceMask = osg::CullSettings::DRAW_BUFFER | osg::CullSettings::READ_BUFFER;
constexpr unsigned int kHiZTextureUnit = 0;
char const* const kTransparentBinName = "DepthSortedBin";
char const* const kCullingVersion = "#version 430 core\n";
constexpr unsigned int kOverride = osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE;
constexpr unsigned int kProtectedOverride = kOverride | osg::StateAttribute::PROTECTED;

osg::ref_ptr<osg::Program> cullingProgram()
{
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("InstanceCulling");
    char const* blocks = KVShaderSource::get("blocks");
    char const* body = KVShaderSource::get("hiz_cull.comp");
    if (!blocks || !body)
        return program;
    osg::ref_ptr<osg::Shader> shader =
        new osg::Shader(osg::Shader::COMPUTE, std::string(kCullingVersion) + blocks + body);
    shader->setName("hiz_cull.comp");
    program->addShader(shader.get());
    return program;
}

osg::ref_ptr<osg::Texture2D> hiZTexture(unsigned int width, unsigned int height)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setTextureSize(static_cast<int>(width), static_cast<int>(height));
    texture->setInternalFormat(GL_DEPTH_COMPONENT24);
    texture->setSourceFormat(GL_DEPTH_COMPONENT);
    texture->setSourceType(GL_UNSIGNED_INT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST_MIPMAP_NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

void setProgram(osg::StateSet* stateSet, osg::Program* program, unsigned int mode)
{
    if (stateSet && program)
        stateSet->setAttribute(program, mode);
}

} // namespace

CKVHiZGenerator::CKVHiZGenerator(osg::Camera* camera, osg::Group* root)
    : mRoot(root)
    , mCamera(camera)
    , mHiZTexture(hiZTexture(1, 1))
    , mScreenSizeUniform(new osg::Uniform(kScreenSizeUniform, osg::Vec2f(1.0f, 1.0f)))
    , mHiZTestUniform(new osg::Uniform(kHiZTestUniform, 1))
    , mCullingProgram(cullingProgram())
{
    setName("HiZGenerator");
    mHiZGeometry = new HiZGeometry(mHiZTexture.get(), root);
    CKVProgramParam::Type const kinds[kVariantCount + 1] = {
        CKVProgramParam::kDepthOnly, CKVProgramParam::kDepthOnlyInstanced, CKVProgramParam::kDepthOnlyTerrain,
        CKVProgramParam::kDepthOnlyClip, CKVProgramParam::kDepthOnlyInstancedClip};
    for (unsigned int i = 0; i <= kVariantCount; ++i)
        mDepthPrograms[i] = CKVProgramManager::instance().getProgram(CKVProgramParam(kinds[i]));
    buildDepthPass();
    buildOcclusionPass();
    if (osg::Viewport const* viewport = camera ? camera->getViewport() : nullptr)
        resize(static_cast<unsigned int>(viewport->width()), static_cast<unsigned int>(viewport->height()));
}

CKVHiZGenerator::~CKVHiZGenerator() = default;

void CKVHiZGenerator::setUpPassCamera(osg::Camera& camera, char const* name, int order) const
{
    camera.setName(name);
    camera.setViewport(0, 0, static_cast<int>(mWidth), static_cast<int>(mHeight));
    camera.setAllowEventFocus(false);
    camera.setRenderOrder(osg::Camera::PRE_RENDER, order);
    camera.setInheritanceMask(kInheritanceMask);
    camera.setColorMask(nullptr);
    osg::ref_ptr<osg::Camera> main;
    if (mCamera.lock(main))
    {
        camera.setComputeNearFarMode(main->getComputeNearFarMode());
        camera.setCullingMode(main->getCullingMode());
        camera.setSmallFeatureCullingPixelSize(main->getSmallFeatureCullingPixelSize());
    }
}

void CKVHiZGenerator::buildDepthPass()
{
    mDepthPass = new PassData(*this, mRoot.get(), kVariantCount);
    osg::Camera* camera = mDepthPass->getCamera();
    setUpPassCamera(*camera, "HizDepthCamera", kDepthOrderNum);
    // No attachment: the depth goes into the window, where the scene pass
    // finds it.
    camera->setClearMask(GL_DEPTH_BUFFER_BIT);
    camera->setPostDrawCallback(new HiZCallback(mHiZGeometry.get()));

    osg::StateSet* stateSet = mDepthPass->getStateSet();
    // The depth-only programs write no colour; the window's colour must not
    // take whatever an output-less stage leaves.
    stateSet->setAttribute(new osg::ColorMask(false, false, false, false), kOverride);
    setProgram(stateSet, mDepthPrograms[0].get(), kOverride);
    Variant const variants[kVariantCount] = {kInstancedVariant, kTerrainVariant, kClipVariant,
                                             kInstancedClipVariant};
    for (unsigned int i = 0; i < kVariantCount; ++i)
        setProgram(mDepthPass->getVariant(variants[i]), mDepthPrograms[i + 1].get(), kProtectedOverride);
    addPass(mDepthPass.get());
}

void CKVHiZGenerator::buildOcclusionPass()
{
    mOcclusionPass = new PassData(*this, mRoot.get(), kVariantCount);
    osg::Camera* camera = mOcclusionPass->getCamera();
    setUpPassCamera(*camera, "OcclusionCamera", kOcclusionOrderNum);
    camera->setClearMask(0);
    camera->setPostDrawCallback(new MemoryBarrierCallback);

    osg::StateSet* stateSet = mOcclusionPass->getStateSet();
    setProgram(stateSet, mCullingProgram.get(), kOverride);
    stateSet->setTextureAttribute(kHiZTextureUnit, mHiZTexture.get(), kOverride);
    stateSet->addUniform(new osg::Uniform(kHiZMapUniform, static_cast<int>(kHiZTextureUnit)));
    stateSet->addUniform(mScreenSizeUniform.get());
    stateSet->addUniform(mHiZTestUniform.get());
    addPass(mOcclusionPass.get());
}

void CKVHiZGenerator::resize(unsigned int width, unsigned int height)
{
    if (width == 0 || height == 0)
        return;
    mWidth = width;
    mHeight = height;
    mHiZTexture->setTextureSize(static_cast<int>(width), static_cast<int>(height));
    mHiZTexture->dirtyTextureObject();
    mHiZGeometry->setSize(width, height);
    mScreenSizeUniform->set(osg::Vec2f(static_cast<float>(width), static_cast<float>(height)));
    for (PassData* pass : {mDepthPass.get(), mOcclusionPass.get()})
        pass->getCamera()->resize(static_cast<int>(width), static_cast<int>(height),
                                  osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS);
}

void CKVHiZGenerator::runPass(osgUtil::CullVisitor& visitor, PassData& pass)
{
    visitor.pushStateSet(pass.getStateSet());
    pass.getCamera()->accept(visitor);
    visitor.popStateSet();
}

void CKVHiZGenerator::traverse(osg::NodeVisitor& visitor)
{
    osgUtil::CullVisitor* cullVisitor = visitor.asCullVisitor();
    if (!cullVisitor)
        return;
    CKVRenderStateManager const& switches = CKVRenderStateManager::instance();
    bool const prePass = switches.isHiZ();
    if (prePass)
        runPass(*cullVisitor, *mDepthPass);
    if (switches.isOcclusionCulling())
    {
        // Without this frame's depth only the frustum and size tests mean
        // anything.
        mHiZTestUniform->set(prePass ? 1 : 0);
        runPass(*cullVisitor, *mOcclusionPass);
    }
}

bool CKVHiZGenerator::isTransparent(osg::StateSet const& stateSet)
{
    if (stateSet.getRenderingHint() == osg::StateSet::TRANSPARENT_BIN)
        return true;
    return stateSet.getRenderBinMode() == osg::StateSet::USE_RENDERBIN_DETAILS &&
           stateSet.getBinName() == kTransparentBinName;
}

void CKVHiZGenerator::cullChild(osgUtil::CullVisitor& visitor, osg::Node& child, PassData& pass)
{
    if (std::strcmp(child.className(), CKVOSGTransformNode::s_className) == 0)
    {
        osg::StateSet const* own = child.getStateSet();
        if (!own || isTransparent(*own))
            return;
    }
    CKVSceneGenerator::cullChild(visitor, child, pass);
}

osg::StateSet* CKVHiZGenerator::variantFor(CKVSceneNode const& node, PassData& pass) const
{
    CKVProgramParam const param = node.getProgramParam();
    bool const programmed = param.getType() != CKVProgramParam::kNoProgram;
    bool const clipped = param.hasParam(CKVProgramParam::kUseAnimationClipTest);
    if (programmed && param.hasParam(CKVProgramParam::kUseInstanceMatrix))
        return pass.getVariant(clipped ? kInstancedClipVariant : kInstancedVariant);
    if (param.getType() == CKVProgramParam::kTerrain)
        return pass.getVariant(kTerrainVariant);
    if (programmed && clipped)
        return pass.getVariant(kClipVariant);
    return nullptr;
}

void CKVHiZGenerator::releaseGLObjects(osg::State* state) const
{
    CKVSceneGenerator::releaseGLObjects(state);
    mHiZTexture->releaseGLObjects(state);
    mHiZGeometry->releaseGLObjects(state);
    for (osg::ref_ptr<osg::Program> const& program : mDepthPrograms)
    {
        if (program.valid())
            program->releaseGLObjects(state);
    }
    if (mCullingProgram.valid())
        mCullingProgram->releaseGLObjects(state);
}

} // namespace Kelvor
