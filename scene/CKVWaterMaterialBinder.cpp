#include "scene/CKVWaterMaterialBinder.h"

#include "scene/CKVMaterialBinder.h"
#include "scene/CKVTextureLoader.h"

#include "TarnwickRender/CKVPhysicalWaterMaterial.h"
#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVWaterMaterial.h"

#include <osg/CullFace>
#include <osg/PatchParameter>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/TextureCubeMap>
#include <osg/Uniform>

namespace Kelvor {

namespace {

// Water displaces by a tenth of the host's value in both terms: its
// surfaces are large and flat, where a slope-scaled offset would vary.
double const kWaterDisplacementScale = 0.1;
// The physical water is tessellated in quads.
int const kPatchVertices = 4;

} // namespace

void CKVWaterMaterialBinder::applyCommon(CKVBasicMaterial const* material, osg::StateSet* stateSet)
{
    unsigned char r = 0, g = 0, b = 0, a = 255;
    material->getRGBA(r, g, b, a);
    stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4f(r / 255.0f, g / 255.0f, b / 255.0f, a / 255.0f)));
    // Water blends in its own program; only the bin is chosen here.
    if (a < 255 && material->getSortTransparency())
        CKVMaterialBinder::makeRenderBinDetails(stateSet, material);
    double const displacement = material->getFaceDisplacement();
    CKVMaterialBinder::applyDisplacement(stateSet, displacement, kWaterDisplacementScale,
                                         displacement * kWaterDisplacementScale);
    CKVMaterialBinder::applyDepthRange(stateSet, material);
}

void CKVWaterMaterialBinder::bindResourceTexture(osg::StateSet* stateSet, unsigned int unit, char const* relativePath,
                                                 char const* uniform)
{
    if (stateSet->getTextureAttribute(unit, osg::StateAttribute::TEXTURE))
        return;
    osg::ref_ptr<osg::Image> image = CKVTextureLoader::getResourceImage(relativePath);
    if (!image.valid())
        return;
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image.get());
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    CKVMaterialBinder::bindTexture(stateSet, texture.get(), uniform, unit, false);
}

void CKVWaterMaterialBinder::bindCubeMap(osg::StateSet* stateSet, unsigned int unit)
{
    if (stateSet->getTextureAttribute(unit, osg::StateAttribute::TEXTURE))
        return;
    osg::ref_ptr<osg::TextureCubeMap> cube = CKVTextureLoader::makeWaterCubeMap();
    CKVMaterialBinder::bindTexture(stateSet, cube.get(), "cubeMap", unit, false);
}

void CKVWaterMaterialBinder::leaveExtraPasses(CKVSceneNode* hostNode)
{
    CKVSceneNodeState* state = hostNode ? hostNode->getStateSet()->getState(CKVSceneNodeState::kRenderOption) : nullptr;
    if (!state || !state->isKindOf(CKVRenderOptionState::desc()))
        return;
    CKVRenderOptionState* options = static_cast<CKVRenderOptionState*>(state);
    options->removeRenderOption(CKVRenderOptionState::kWaterReflection);
    options->removeRenderOption(CKVRenderOptionState::kCastShadow);
    options->removeRenderOption(CKVRenderOptionState::kAmbientOcclusion);
}

void CKVWaterMaterialBinder::applyWaterMaterial(CKVWaterMaterial const* material, osg::StateSet* stateSet,
                                                CKVSceneNode* hostNode)
{
    if (!material || !stateSet)
        return;
    applyCommon(material, stateSet);
    bindResourceTexture(stateSet, 0, "/water/normal.tga", "normalMap");
    bindCubeMap(stateSet, 1);
    // Units 2 and 3 are reserved for the post-process node's reflection
    // texture and atmosphere cube map.
    stateSet->addUniform(new osg::Uniform("speed", material->getSpeed()));
    CKVPoint2D const flow = material->getFlowDir();
    stateSet->addUniform(new osg::Uniform("FlowDir", osg::Vec2f(static_cast<float>(flow.x), static_cast<float>(flow.y))));
    stateSet->addUniform(new osg::Uniform("normalScale", material->getNormalScale()));
    leaveExtraPasses(hostNode);
}

void CKVWaterMaterialBinder::applyPhysicalWaterMaterial(CKVPhysicalWaterMaterial const* material,
                                                        osg::StateSet* stateSet, CKVSceneNode* hostNode)
{
    if (!material || !stateSet)
        return;
    applyCommon(material, stateSet);
    bindResourceTexture(stateSet, 0, "/water/gwater_height.png", "s_HeightTexture");
    bindResourceTexture(stateSet, 1, "/water/gwater_normal.png", "s_NormalTexture");
    bindCubeMap(stateSet, 2);
    // Units 3 to 5 are reserved for the post-process node's reflection
    // texture, atmosphere cube map and depth pyramid.
    stateSet->addUniform(new osg::Uniform("speed", material->getSpeed()));
    // Setting the attribute is enough for its patch size to be applied;
    // tessellation itself is switched by the program.
    stateSet->setAttribute(new osg::PatchParameter(kPatchVertices), osg::StateAttribute::OFF);
    leaveExtraPasses(hostNode);
    // The waves are seen from above only, whatever the material asks.
    stateSet->setAttribute(new osg::CullFace(osg::CullFace::BACK), osg::StateAttribute::ON);
    stateSet->setMode(GL_CULL_FACE, osg::StateAttribute::ON);
}

} // namespace Kelvor
