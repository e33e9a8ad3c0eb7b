#pragma once

namespace osg {
class StateSet;
class Texture;
} // namespace osg

namespace Kelvor {

class CKVBasicMaterial;
class CKVLineMaterial;
class CKVPhysicalMaterial;

// Turns the plain materials (basic, physical, line) into state set content:
// textures, uniforms, blending, bins, polygon offset, depth range and face
// culling. It only adds to what the state set holds, so that a material
// applied twice replaces its own attributes and uniforms by name and type
// instead of stacking them.
class CKVMaterialBinder
{
public:
    // Bits of the "TextureMask" uniform: which maps a surface really has.
    enum TextureMaskBit : unsigned int {
        kAlbedoMap = 1,
        kNormalMap = 2,
        kRoughnessMap = 8,
        kAoMap = 16
    };

    // Bin numbers of translucent surfaces start here, after every opaque
    // bin; passes that skip translucent surfaces look for this bin name.
    static constexpr int kTransparentBinOffset = 10;
    static char const* const kTransparentBinName;

    static void applyBasicMaterial(CKVBasicMaterial const* material, osg::StateSet* stateSet, unsigned& mask);
    // Runs after applyBasicMaterial on the same state set and mask.
    static void applyPhysicalMaterial(CKVPhysicalMaterial const* material, osg::StateSet* stateSet, unsigned& mask);
    static void applyLineMaterial(CKVLineMaterial const* material, osg::StateSet* stateSet);

    static void makeRenderBinDetails(osg::StateSet* stateSet, CKVBasicMaterial const* material);

    // Polygon offset of factor `displacement * factorScale` and units
    // `units`; nothing when the displacement is zero within 1e-6.
    static void applyDisplacement(osg::StateSet* stateSet, double displacement, double factorScale, double units);
    static void applyDepthRange(osg::StateSet* stateSet, CKVBasicMaterial const* material);
    static void applyFaceCulling(osg::StateSet* stateSet, CKVBasicMaterial const* material);

    // Gives a sampler uniform its texture: through a resident handle where
    // the driver has bindless textures and `mayBeBindless`, else on `unit`
    // with an integer uniform holding the unit.
    static void bindTexture(osg::StateSet* stateSet, osg::Texture* texture, char const* uniform, unsigned int unit,
                            bool mayBeBindless);
};

} // namespace Kelvor
