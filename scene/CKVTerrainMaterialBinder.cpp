#include "scene/CKVTerrainMaterialBinder.h"

#include "scene/CKVMaterialBinder.h"
#include "scene/CKVTextureLoader.h"

#include "TarnwickRender/CKVTerrainMaterial.h"

#include <osg/CopyOp>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/Texture2DArray>
#include <osg/Uniform>

#include <algorithm>
#include <climits>
#include <utility>

namespace Kelvor {

namespace {

// As on water: large, flat surfaces, a tenth of the host's value.
double const kTerrainDisplacementScale = 0.1;

} // namespace

osg::ref_ptr<osg::Texture2DArray> CKVTerrainMaterialBinder::makeLayerArray(std::vector<osg::ref_ptr<osg::Image>> layers)
{
    if (layers.empty())
        return nullptr;
    osg::ref_ptr<osg::Texture2DArray> array = new osg::Texture2DArray;
    array->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    array->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    array->setWrap(osg::Texture::WRAP_R, osg::Texture::REPEAT);
    array->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
    CKVTextureLoader::setTextureFilter(array.get());

    int width = INT_MAX;
    int height = INT_MAX;
    for (osg::ref_ptr<osg::Image> const& layer : layers) {
        if (!layer.valid())
            continue;
        width = std::min(width, layer->s());
        height = std::min(height, layer->t());
    }
    GLint const format = layers.front().valid() ? layers.front()->getInternalTextureFormat() : 0;
    for (unsigned int i = 0; i < layers.size(); ++i) {
        osg::ref_ptr<osg::Image>& layer = layers[i];
        if (!layer.valid())
            continue;
        bool const resize = layer->s() != width || layer->t() != height;
        bool const reformat = format != 0 && layer->getInternalTextureFormat() != format;
        // An image with other owners (the shared error images) must not be
        // changed under them.
        if ((resize || reformat) && layer->referenceCount() > 1)
            layer = osg::clone(layer.get(), osg::CopyOp::DEEP_COPY_ALL);
        if (resize)
            layer->scaleImage(width, height, 1);
        if (format != 0)
            layer->setInternalTextureFormat(format);
        array->setImage(i, layer.get());
    }
    return array;
}

void CKVTerrainMaterialBinder::applyTerrainMaterial(CKVTerrainMaterial const* material, osg::StateSet* stateSet)
{
    if (!material || !stateSet)
        return;
    double const displacement = material->getFaceDisplacement();
    CKVMaterialBinder::applyDisplacement(stateSet, displacement, kTerrainDisplacementScale,
                                         displacement * kTerrainDisplacementScale);
    CKVMaterialBinder::applyDepthRange(stateSet, material);

    CKVTerrainMaterial::TextureArray const& paths = material->getTextureArray();
    std::vector<osg::ref_ptr<osg::Image>> layers;
    for (unsigned int i = 0; i < paths.size(); ++i)
        layers.push_back(CKVTextureLoader::readImageOrErrorImage(paths[i].c_str()));
    osg::ref_ptr<osg::Texture2DArray> array = makeLayerArray(std::move(layers));

    // Unit 0 is reserved for the atmosphere's cube map, which the
    // post-process node's atmosphere gives to the terrain.
    unsigned int const firstFreeUnit = 0;

    osg::ref_ptr<osg::Texture2D> cliff = new osg::Texture2D;
    CKVTextureLoader::setTextureFilter(cliff.get());
    cliff->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    cliff->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    cliff->setImage(CKVTextureLoader::getResourceImage("/terrain/cliff.dds").get());

    if (array.valid())
        CKVMaterialBinder::bindTexture(stateSet, array.get(), "terrainTextureArray", firstFreeUnit, true);
    CKVMaterialBinder::bindTexture(stateSet, cliff.get(), "cliffTexture", firstFreeUnit + 1, true);

    stateSet->addUniform(new osg::Uniform("changeHeight", material->getChangeHeight()));
    stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4f(0.0f, 0.0f, 0.0f, 1.0f)));
}

} // namespace Kelvor
