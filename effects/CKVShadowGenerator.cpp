#include "effects/CKVShadowGenerator.h"

#include "effects/KawaseBlurGeometry.h"
#include "environment/CBGGeode.h"
#include "programs/CKVProgramManager.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/CKVSceneNodeImp.h"
#include "scene/KVBindlessHandleUniform.h"
#include "viewer/DepthMask.h"

#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include <osg/Image>
#include <osg/Texture2D>
#include <osgUtil/CullVisitor>

#include <algorithm>

namespace Kelvor {

char const* const CKVShadowGenerator::kDefine = "_USE_SHADOW";

namespace {

// Pre-render order: after the depth pre-pass, before occlusion culling and
// ambient occlusion; the scene pass that reads the maps comes much later.
constexpr int kDepthOrderNum = 4;
constexpr int kBlurOrderNum = 5;
// Only draw and read buffer come from the main camera.
constexpr unsigned int kInheritanceMask = osg::CullSettings::DRAW_BUFFER | osg::CullSettings::READ_BUFFER;
// The light frusta fit the camera's frustum; what lies before or behind
// them along the light still casts (depth clamp), so only the sides cull.
constexpr unsigned int kDepthCullingMode = osg::CullSettings::VIEW_FRUSTUM_SIDES_CULLING;
// Map sizes of levels 1, 2 and 3 and above.
constexpr unsigned int kMapSizes[] = {1024, 2048, 4096};
// The graphics model's fields whose bounds hold what can cast or receive.
constexpr unsigned int kBoundsFields[] = {0, 4};
// The unit of the pass's transparent default texture without bindless
// textures; a material's own texture replaces it.
constexpr unsigned int kDefaultAlbedoUnit = 0;

osg::ref_ptr<osg::Texture2DArray> momentsArray(unsigned int width, unsigned int height)
{
    osg::ref_ptr<osg::Texture2DArray> texture = new osg::Texture2DArray;
    texture->setTextureSize(width, height, CKVShadowGenerator::kCascadeCount);
    texture->setInternalFormat(GL_RG32F);
    texture->setSourceFormat(GL_RG);
    texture->setSourceType(GL_FLOAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    // Outside the map the moments say "nearest possible": nothing there is
    // in shadow.
    for (osg::Texture::WrapParameter wrap : {osg::Texture::WRAP_S, osg::Texture::WRAP_T, osg::Texture::WRAP_R})
        texture->setWrap(wrap, osg::Texture::CLAMP_TO_BORDER);
    texture->setBorderColor(osg::Vec4d(1.0, 1.0, 1.0, 1.0));
    return texture;
}

osg::ref_ptr<osg::Texture2DArray> depthArray(unsigned int width, unsigned int height)
{
    osg::ref_ptr<osg::Texture2DArray> texture = new osg::Texture2DArray;
    texture->setTextureSize(width, height, CKVShadowGenerator::kCascadeCount);
    texture->setInternalFormat(GL_DEPTH_COMPONENT24);
    texture->setSourceFormat(GL_DEPTH_COMPONENT);
    texture->setSourceType(GL_UNSIGNED_INT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    for (osg::Texture::WrapParameter wrap : {osg::Texture::WRAP_S, osg::Texture::WRAP_T, osg::Texture::WRAP_R})
        texture->setWrap(wrap, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

// One transparent texel: a caster whose material brings neither a texture
// nor an opaque colour writes nothing.
osg::ref_ptr<osg::Texture2D> transparentTexture()
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(1, 1, 1, GL_RGBA, GL_FLOAT);
    float* texel = reinterpret_cast<float*>(image->data());
    texel[0] = texel[1] = texel[2] = texel[3] = 0.0f;
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image.get());
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    return texture;
}

void setProgram(osg::StateSet* stateSet, osg::Program* program, unsigned int extraMode)
{
    if (program)
        stateSet->setAttribute(program, osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE | extraMode);
}

} // namespace

CKVShadowGenerator::CKVShadowGenerator(CKVScene* scene, osg::Camera* camera, osg::Group* root)
    : mScene(scene)
    , mCamera(camera)
    , mRoot(root)
{
    setName("ShadowGenerator");
    CKVProgramParam::Type const casters[kCasterProgramCount] = {
        CKVProgramParam::kShadowCaster, CKVProgramParam::kShadowCasterInstanced, CKVProgramParam::kShadowCasterTerrain};
    for (unsigned int i = 0; i < kCasterProgramCount; ++i)
        mCasterPrograms[i] = CKVProgramManager::instance().getProgram(CKVProgramParam(casters[i]));
    // Towards the sun from straight above until the context says otherwise.
    setLightDirection(osg::Vec3d(0.0, 0.0, 1.0));
}

CKVShadowGenerator::~CKVShadowGenerator() = default;

unsigned int CKVShadowGenerator::mapSize(int level)
{
    if (level <= 0)
        return 0;
    return kMapSizes[std::min(level, 3) - 1];
}

bool CKVShadowGenerator::setShadowLevel(int level)
{
    level = std::max(level, 0);
    if (level == mLevel)
        return false;
    bool const switched = (mLevel == 0) != (level == 0);
    mLevel = level;
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
        if (!mLevelInitialised)
            setUp();
        if (root.valid())
            root->getOrCreateStateSet()->setDefine(kDefine);
        resize(mapSize(level), mapSize(level));
    }
    // The surfaces read the maps only in their shadow variant.
    if (switched)
        CKVProgramManager::instance().dirtyDefine(kDefine);
    return switched;
}

void CKVShadowGenerator::setShadowIntensity(float intensity)
{
    if (intensity == mShadowIntensity)
        return;
    mShadowIntensity = intensity;
    if (mShadowIntensityUniform.valid())
        mShadowIntensityUniform->set(intensity);
}

void CKVShadowGenerator::setLightDirection(osg::Vec3d const& position)
{
    mCascades.setLightDirection(-position);
}

void CKVShadowGenerator::resize(unsigned int width, unsigned int height)
{
    if (width == 0 || height == 0)
        return;
    mWidth = width;
    mHeight = height;
    for (PassData* pass : {mDepthPass.get(), mBlurPass.get()})
    {
        if (pass)
            pass->getCamera()->resize(static_cast<int>(width), static_cast<int>(height),
                                      osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS);
    }
    // The attachments of the depth pass are arrays: their layers are kept
    // here rather than left to the camera.
    if (mDepthPass.valid())
    {
        for (auto& entry : mDepthPass->getCamera()->getBufferAttachmentMap())
        {
            auto* array = dynamic_cast<osg::Texture2DArray*>(entry.second._texture.get());
            if (!array)
                continue;
            array->setTextureSize(width, height, kCascadeCount);
            array->dirtyTextureObject();
        }
        mDepthPass->getCamera()->dirtyAttachmentMap();
    }
    if (mBlurTexture.valid())
    {
        mBlurTexture->setTextureSize(width, height, kCascadeCount);
        mBlurTexture->dirtyTextureObject();
    }
    if (mBlurGeometry.valid())
        mBlurGeometry->setSize(width, height, kCascadeCount);
}

void CKVShadowGenerator::setUp()
{
    if (mLevelInitialised)
        return;
    mLightViewProjectionUniform =
        new osg::Uniform(osg::Uniform::FLOAT_MAT4, "LightViewProjectionMatrix", kCascadeCount);
    mCascadeEndUniform = new osg::Uniform(osg::Uniform::FLOAT, "CascadeEndClipSpace", kCascadeCount);
    for (unsigned int i = 0; i < kCascadeCount; ++i)
    {
        mLightViewProjectionUniform->setElement(i, osg::Matrixf());
        // Until the first frame no fragment is inside a cascade.
        mCascadeEndUniform->setElement(i, 0.0f);
    }
    mShadowIntensityUniform = new osg::Uniform("ShadowIntensity", mShadowIntensity);
    mShadowTextureUniform = new osg::Uniform("Shadow_Tx", static_cast<int>(kTextureUnit));
    buildDepthPass();
    buildBlurPass();

    osg::ref_ptr<osg::Group> root;
    if (mRoot.lock(root))
    {
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        // Only the sampler reads it: no texturing mode to switch on.
        stateSet->setTextureAttribute(kTextureUnit, mMomentsTexture.get());
        for (osg::Uniform* uniform : {mShadowTextureUniform.get(), mLightViewProjectionUniform.get(),
                                      mCascadeEndUniform.get(), mShadowIntensityUniform.get()})
            stateSet->addUniform(uniform);
    }
    mLevelInitialised = true;
}

void CKVShadowGenerator::tearDown()
{
    if (!mLevelInitialised)
        return;
    osg::ref_ptr<osg::Group> root;
    if (mRoot.lock(root))
    {
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        stateSet->removeTextureAttribute(kTextureUnit, osg::StateAttribute::TEXTURE);
        for (osg::Uniform* uniform : {mShadowTextureUniform.get(), mLightViewProjectionUniform.get(),
                                      mCascadeEndUniform.get(), mShadowIntensityUniform.get()})
            stateSet->removeUniform(uniform);
    }
    removePass(mDepthPass.get());
    removePass(mBlurPass.get());
    mDepthPass = nullptr;
    mBlurPass = nullptr;
    mMomentsTexture = nullptr;
    mBlurTexture = nullptr;
    mBlurGeometry = nullptr;
    mBlurGeode = nullptr;
    mShadowTextureUniform = nullptr;
    mLightViewProjectionUniform = nullptr;
    mCascadeEndUniform = nullptr;
    mShadowIntensityUniform = nullptr;
    mLevelInitialised = false;
}

void CKVShadowGenerator::buildDepthPass()
{
    mMomentsTexture = momentsArray(mWidth, mHeight);
    mDepthPass = new PassData(*this, mRoot.get(), kVariantCount);
    osg::Camera* camera = mDepthPass->getCamera();
    camera->setName("ShadowDepthCamera");
    // Layered: the geometry stage sends each cascade to its layer.
    camera->attach(osg::Camera::COLOR_BUFFER0, mMomentsTexture.get(), 0,
                   osg::Camera::FACE_CONTROLLED_BY_GEOMETRY_SHADER);
    camera->attach(osg::Camera::DEPTH_BUFFER, depthArray(mWidth, mHeight).get(), 0,
                   osg::Camera::FACE_CONTROLLED_BY_GEOMETRY_SHADER);
    camera->setViewport(0, 0, static_cast<int>(mWidth), static_cast<int>(mHeight));
    camera->setAllowEventFocus(false);
    camera->setRenderOrder(osg::Camera::PRE_RENDER, kDepthOrderNum);
    camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    // Depth 1 everywhere: where nothing casts, nothing is in shadow.
    camera->setClearColor(osg::Vec4(1.0f, 1.0f, 1.0f, 1.0f));
    camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera->setCullingMode(kDepthCullingMode);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setInheritanceMask(kInheritanceMask);
    camera->setColorMask(nullptr);

    osg::StateSet* stateSet = mDepthPass->getStateSet();
    // Casters before the light frustum's near plane still cast.
    stateSet->setMode(GL_DEPTH_CLAMP, osg::StateAttribute::ON);
    stateSet->addUniform(mLightViewProjectionUniform.get(), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4f(0.0f, 0.0f, 0.0f, 0.0f)));
    osg::ref_ptr<osg::Texture2D> transparent = transparentTexture();
    if (CKVRenderStateManager::instance().isBindlessTexture())
    {
        osg::ref_ptr<KVBindlessHandleUniform> handle = new KVBindlessHandleUniform("Albedo_Tx", 0, true);
        stateSet->addUniform(handle.get());
        getOrCreateBindlessTexture(stateSet)->addTexture({transparent, handle});
    }
    else
    {
        stateSet->setTextureAttribute(kDefaultAlbedoUnit, transparent.get());
        stateSet->addUniform(new osg::Uniform("Albedo_Tx", static_cast<int>(kDefaultAlbedoUnit)));
    }

    // A caster's own program never applies: the pass's wins by override,
    // and the variants, protected, win over the pass's.
    setProgram(stateSet, mCasterPrograms[0].get(), 0);
    setProgram(mDepthPass->getVariant(kInstancedVariant), mCasterPrograms[1].get(), osg::StateAttribute::PROTECTED);
    setProgram(mDepthPass->getVariant(kTerrainVariant), mCasterPrograms[2].get(), osg::StateAttribute::PROTECTED);
    addPass(mDepthPass.get());
}

void CKVShadowGenerator::buildBlurPass()
{
    mBlurTexture = momentsArray(mWidth, mHeight);
    mBlurGeometry = new KawaseBlurGeometry(mMomentsTexture.get(), mBlurTexture.get());
    mBlurGeometry->setSize(mWidth, mHeight, kCascadeCount);
    mBlurGeode = new CBGGeode;
    mBlurGeode->addDrawable(mBlurGeometry.get());
    mBlurPass = new PassData(*this, mBlurGeode.get());

    // No attachments: the blur draws into a framebuffer of its own.
    osg::Camera* camera = mBlurPass->getCamera();
    camera->setName("ShadowBlurCamera");
    camera->setViewport(0, 0, static_cast<int>(mWidth), static_cast<int>(mHeight));
    camera->setAllowEventFocus(false);
    camera->setRenderOrder(osg::Camera::PRE_RENDER, kBlurOrderNum);
    camera->setClearMask(0);
    camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera->setCullingMode(osg::CullSettings::NO_CULLING);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setInheritanceMask(kInheritanceMask);
    camera->setColorMask(nullptr);

    osg::StateSet* stateSet = mBlurPass->getStateSet();
    stateSet->setAttribute(mBlurGeometry->getProgram(), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    stateSet->setAttribute(new DepthMask(false), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    addPass(mBlurPass.get());
}

osg::BoundingBox CKVShadowGenerator::sceneBox() const
{
    osg::BoundingBox box;
    kv_shared_ptr<CKVGraphicsModel> model;
    if (!mScene || !mScene->getSafeGraphicsModel(model) || !model.valid())
        return box;
    for (unsigned int index : kBoundsFields)
    {
        CKVGraphicsModelField* field = model->getField(index);
        CKVSceneNode* node = field ? field->getNodeObject() : nullptr;
        if (!node || !node->isKindOf(CKVSceneNodeImp::desc()))
            continue;
        if (osg::Node const* osgNode = static_cast<CKVSceneNodeImp*>(node)->getOSGNode())
            box.expandBy(osgNode->getBound());
    }
    return box;
}

void CKVShadowGenerator::updateFrame(osgUtil::CullVisitor& visitor)
{
    osg::RefMatrix const* projection = visitor.getProjectionMatrix();
    osg::RefMatrix const* modelView = visitor.getModelViewMatrix();
    if (!projection || !modelView)
        return;
    // The view of whichever camera culls the root (a capture's as well as
    // the window's); the root has no transform of its own.
    if (!mCascades.update(*projection, *modelView, sceneBox(), visitor.getLookVectorLocal()))
        return;

    for (unsigned int i = 0; i < kCascadeCount; ++i)
    {
        mCascadeEndUniform->setElement(i, mCascades.getClipSpaceEnd(i));
        mLightViewProjectionUniform->setElement(i, osg::Matrixf(mCascades.getViewProjection(i)));
    }
    // The pass camera's matrices only cull: the shaders use the cascades'.
    osg::Camera* camera = mDepthPass->getCamera();
    camera->setViewMatrix(mCascades.getWholeRange().view);
    camera->setProjectionMatrix(mCascades.getWholeRange().projection);
    camera->dirtyBound();
}

bool CKVShadowGenerator::acceptsSceneNode(CKVSceneNode const& node, PassData const&) const
{
    auto const* option =
        static_cast<CKVRenderOptionState const*>(node.getStateSet()->getState(CKVSceneNodeState::kRenderOption));
    return option && option->hasRenderOption(CKVRenderOptionState::kCastShadow);
}

osg::StateSet* CKVShadowGenerator::variantFor(CKVSceneNode const& node, PassData& pass) const
{
    CKVProgramParam const param = node.getProgramParam();
    if (param.getType() != CKVProgramParam::kNoProgram && param.hasParam(CKVProgramParam::kUseInstanceMatrix))
        return pass.getVariant(kInstancedVariant);
    if (param.getType() == CKVProgramParam::kTerrain)
        return pass.getVariant(kTerrainVariant);
    return nullptr;
}

void CKVShadowGenerator::releaseGLObjects(osg::State* state) const
{
    CKVSceneGenerator::releaseGLObjects(state);
    for (osg::Texture* texture : {static_cast<osg::Texture*>(mMomentsTexture.get()),
                                  static_cast<osg::Texture*>(mBlurTexture.get())})
    {
        if (texture)
            texture->releaseGLObjects(state);
    }
    if (mBlurGeode.valid())
        mBlurGeode->releaseGLObjects(state);
    for (osg::ref_ptr<osg::Program> const& program : mCasterPrograms)
    {
        if (program.valid())
            program->releaseGLObjects(state);
    }
}

} // namespace Kelvor
