#pragma once

namespace osg {
class StateSet;
} // namespace osg

namespace Kelvor {

class CKVBasicMaterial;
class CKVPhysicalWaterMaterial;
class CKVSceneNode;
class CKVWaterMaterial;

// State set content of the two water materials. Resource textures are read
// only for units that are still empty, so that a material change that only
// touches a number does not read the six cube faces again. Water takes no
// part in the reflection, shadow and ambient occlusion passes: those render
// options are taken off the host node.
class CKVWaterMaterialBinder
{
public:
    static void applyWaterMaterial(CKVWaterMaterial const* material, osg::StateSet* stateSet, CKVSceneNode* hostNode);
    static void applyPhysicalWaterMaterial(CKVPhysicalWaterMaterial const* material, osg::StateSet* stateSet,
                                           CKVSceneNode* hostNode);

private:
    // Colour, translucency bin, displacement and depth range, shared by both.
    static void applyCommon(CKVBasicMaterial const* material, osg::StateSet* stateSet);
    // A linear, repeating resource texture on `unit`, unless the unit is taken.
    static void bindResourceTexture(osg::StateSet* stateSet, unsigned int unit, char const* relativePath,
                                    char const* uniform);
    static void bindCubeMap(osg::StateSet* stateSet, unsigned int unit);
    static void leaveExtraPasses(CKVSceneNode* hostNode);
};

} // namespace Kelvor
