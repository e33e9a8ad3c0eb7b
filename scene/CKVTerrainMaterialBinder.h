#pragma once

#include <osg/Image>
#include <osg/ref_ptr>

#include <vector>

namespace osg {
class StateSet;
class Texture2DArray;
} // namespace osg

namespace Kelvor {

class CKVTerrainMaterial;

// State set content of the terrain material: the layer textures as one
// array texture, the cliff texture and the height at which layers change.
class CKVTerrainMaterialBinder
{
public:
    static void applyTerrainMaterial(CKVTerrainMaterial const* material, osg::StateSet* stateSet);

    // One array texture from layer images, in order. Every layer of an array
    // must have one size and format, so all are scaled to the smallest width
    // and height seen and given the format of layer 0. Shared images (the
    // error images) are copied before they are changed. Null without layers.
    static osg::ref_ptr<osg::Texture2DArray> makeLayerArray(std::vector<osg::ref_ptr<osg::Image>> layers);
};

} // namespace Kelvor
