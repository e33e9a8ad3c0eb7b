#include "scene/CKVMaterialBinder.h"

#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/KVBindlessHandleUniform.h"
#include "scene/CKVTextureLoader.h"
#include "viewer/DepthRange.h"

#include "TarnwickGeometry/KVMath.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVLineMaterial.h"
#include "TarnwickRender/CKVPhysicalMaterial.h"

#include <osg/CullFace>
#include <osg/LineStipple>
#include <osg/LineWidth>
#include <osg/PolygonOffset>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/Uniform>

namespace Kelvor {

char const* const CKVMaterialBinder::kTransparentBinName = "DepthSortedBin";

namespace {

// Displacements closer to zero than this are rounding noise from the host.
double const kDisplacementTolerance = 9.999999974752427e-7;
// Maps the host's displacement to a polygon offset factor pushing the
// surface forward for positive values.
double const kBasicDisplacementFactor = -0.03125;
double const kBasicDisplacementUnits = 0.01;
// 1010101010101010: one pixel on, one off, stretched by the line type.
unsigned short const kStipplePattern = 43690;
// The host's cull face enumerators are offsets from GL_FRONT.
int const kCullFaceBase = 1028;

unsigned int const kAlbedoUnit = 0;
unsigned int const kNormalUnit = 1;
unsigned int const kRoughnessUnit = 3;
unsigned int const kAoUnit = 4;

osg::Vec4f colorOf(CKVBasicMaterial const& material, unsigned char& alpha)
{
    unsigned char r = 0, g = 0, b = 0;
    material.getRGBA(r, g, b, alpha);
    return osg::Vec4f(r / 255.0f, g / 255.0f, b / 255.0f, alpha / 255.0f);
}

void blend(osg::StateSet* stateSet, CKVBasicMaterial const* material)
{
    stateSet->setMode(GL_BLEND, osg::StateAttribute::ON);
    if (material->getSortTransparency())
        CKVMaterialBinder::makeRenderBinDetails(stateSet, material);
}

// A map of the physical material; a map that cannot be read is left out,
// with no error image: the plain value stands in for it.
osg::ref_ptr<osg::Texture2D> mapTexture(char const* path)
{
    if (!path || !*path)
        return nullptr;
    osg::ref_ptr<osg::Image> image = CKVTextureLoader::readImage(path);
    if (!image.valid())
        return nullptr;
    return CKVTextureLoader::makeRepeatTexture(image.get());
}

} // namespace

void CKVMaterialBinder::applyBasicMaterial(CKVBasicMaterial const* material, osg::StateSet* stateSet, unsigned& mask)
{
    if (!material || !stateSet)
        return;
    char const* texturePath = material->getTexture();
    if (!texturePath || !*texturePath) {
        unsigned char alpha = 255;
        osg::Vec4f const color = colorOf(*material, alpha);
        if (mask == 0)
            stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", color));
        if (alpha < 255)
            blend(stateSet, material);
    } else if (osg::ref_ptr<osg::Image> image = CKVTextureLoader::readImageOrErrorImage(texturePath)) {
        CKVTextureLoader::expandLuminance(*image);
        osg::ref_ptr<osg::Texture2D> texture = CKVTextureLoader::makeRepeatTexture(image.get());
        bindTexture(stateSet, texture.get(), "Albedo_Tx", kAlbedoUnit, true);
        mask |= kAlbedoMap;
        if (image->isImageTranslucent())
            blend(stateSet, material);
        // With a texture the colour must add nothing: programs that add
        // both (the reflected surface) then see the texture alone.
        stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4f(0.0f, 0.0f, 0.0f, 0.0f)));
    }

    applyDisplacement(stateSet, material->getFaceDisplacement(), kBasicDisplacementFactor, kBasicDisplacementUnits);
    applyDepthRange(stateSet, material);
    applyFaceCulling(stateSet, material);
}

void CKVMaterialBinder::applyPhysicalMaterial(CKVPhysicalMaterial const* material, osg::StateSet* stateSet,
                                              unsigned& mask)
{
    if (!material || !stateSet)
        return;
    osg::ref_ptr<osg::Texture2D> normalMap = mapTexture(material->getNormalMap());
    osg::ref_ptr<osg::Texture2D> roughnessMap = mapTexture(material->getRoughnessMap());
    osg::ref_ptr<osg::Texture2D> aoMap = mapTexture(material->getAoMap());

    if (normalMap.valid()) {
        bindTexture(stateSet, normalMap.get(), "NorMap_Tx", kNormalUnit, false);
        mask |= kNormalMap;
    }
    stateSet->addUniform(new osg::Uniform("Metallic_F", material->getMetallic()));
    if (roughnessMap.valid()) {
        bindTexture(stateSet, roughnessMap.get(), "Roughness_Tx", kRoughnessUnit, false);
        mask |= kRoughnessMap;
    } else {
        stateSet->addUniform(new osg::Uniform("Roughness_F", material->getRoughness()));
    }
    if (aoMap.valid()) {
        bindTexture(stateSet, aoMap.get(), "AO_Tx", kAoUnit, false);
        mask |= kAoMap;
    }
    stateSet->addUniform(new osg::Uniform("TextureMask", static_cast<int>(mask)));
    // From now on the image-based lighting has a surface to light.
    CKVRenderStateManager::instance().setPBRInUse(true);
}

void CKVMaterialBinder::applyLineMaterial(CKVLineMaterial const* material, osg::StateSet* stateSet)
{
    if (!material || !stateSet)
        return;
    int const type = material->getLineType();
    if (type >= CKVLineMaterial::kDash1 && type <= CKVLineMaterial::kDash5)
        stateSet->setAttributeAndModes(new osg::LineStipple(type, kStipplePattern), osg::StateAttribute::ON);
    stateSet->setAttributeAndModes(new osg::LineWidth(material->getLineWidth()), osg::StateAttribute::ON);
}

void CKVMaterialBinder::makeRenderBinDetails(osg::StateSet* stateSet, CKVBasicMaterial const* material)
{
    stateSet->setRenderBinDetails(material->getSortTransparencyBin() + kTransparentBinOffset, kTransparentBinName,
                                  osg::StateSet::USE_RENDERBIN_DETAILS);
}

void CKVMaterialBinder::applyDisplacement(osg::StateSet* stateSet, double displacement, double factorScale,
                                          double units)
{
    if (Math::compareDbl(displacement, 0.0, kDisplacementTolerance) == 0)
        return;
    osg::ref_ptr<osg::PolygonOffset> offset =
        new osg::PolygonOffset(static_cast<float>(displacement * factorScale), static_cast<float>(units));
    stateSet->setAttributeAndModes(offset.get(), osg::StateAttribute::ON);
}

void CKVMaterialBinder::applyDepthRange(osg::StateSet* stateSet, CKVBasicMaterial const* material)
{
    bool use = false;
    float zNear = 0.0f;
    float zFar = 1.0f;
    material->getDepthRange(use, zNear, zFar);
    if (use)
        stateSet->setAttributeAndModes(new DepthRange(zNear, zFar), osg::StateAttribute::ON);
}

void CKVMaterialBinder::applyFaceCulling(osg::StateSet* stateSet, CKVBasicMaterial const* material)
{
    int const mode = material->getFaceCullMode();
    if (mode == CKVBasicMaterial::kCullNone)
        return;
    osg::ref_ptr<osg::CullFace> cullFace = new osg::CullFace(static_cast<osg::CullFace::Mode>(mode + kCullFaceBase));
    stateSet->setAttribute(cullFace.get(), osg::StateAttribute::ON);
    stateSet->setMode(GL_CULL_FACE, osg::StateAttribute::ON);
}

void CKVMaterialBinder::bindTexture(osg::StateSet* stateSet, osg::Texture* texture, char const* uniform,
                                    unsigned int unit, bool mayBeBindless)
{
    if (mayBeBindless && CKVRenderStateManager::instance().isBindlessTexture()) {
        // The texture takes no unit: its handle is the uniform's value.
        osg::ref_ptr<osg::Uniform> handle = new KVBindlessHandleUniform(uniform, 0, true);
        stateSet->addUniform(handle.get());
        getOrCreateBindlessTexture(stateSet)->addTexture({texture, handle});
        return;
    }
    stateSet->setTextureAttributeAndModes(unit, texture, osg::StateAttribute::ON);
    stateSet->addUniform(new osg::Uniform(uniform, static_cast<int>(unit)));
}

} // namespace Kelvor
