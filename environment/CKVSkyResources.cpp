#include "environment/CKVSkyResources.h"

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/Common.h"

#include <osgDB/ReadFile>
#include <osgDB/Registry>

namespace Kelvor {

namespace {

char const* const kTerrainFiles[CKVSkyResources::kTerrainLayers] = {"/grass.png", "/rock.dds", "/rock2.dds",
                                                                    "/snow_flat.dds", "/snow.dds"};
constexpr float kTerrainAnisotropy = 4.0f;

osg::ref_ptr<osg::Image> readImage(std::string const& path)
{
    // Checked first so that a missing optional file stays silent.
    if (!Common::checkFile(path.c_str()))
        return nullptr;
    return osgDB::readRefImageFile(path, osgDB::Registry::instance()->getOptions());
}

} // namespace

std::string CKVSkyResources::resourceDirectory()
{
    CKVAString directory;
    Common::getResourceDirectory(directory);
    return directory.c_str();
}

osg::ref_ptr<osg::Texture2D> CKVSkyResources::loadStarNoise()
{
    osg::ref_ptr<osg::Texture2D> noise = new osg::Texture2D;
    noise->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    noise->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    noise->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    noise->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    if (osg::ref_ptr<osg::Image> image = readImage(resourceDirectory() + "/skybox/grayNoise.png"))
        noise->setImage(image.get());
    return noise;
}

osg::ref_ptr<osg::Texture2DArray> CKVSkyResources::loadTerrainLayers()
{
    osg::ref_ptr<osg::Texture2DArray> layers = new osg::Texture2DArray;
    layers->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    layers->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    layers->setWrap(osg::Texture::WRAP_R, osg::Texture::REPEAT);
    layers->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
    layers->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    layers->setMaxAnisotropy(kTerrainAnisotropy);

    std::string const folder = resourceDirectory() + "/terrain";
    osg::ref_ptr<osg::Image> images[kTerrainLayers];
    for (unsigned int i = 0; i < kTerrainLayers; ++i) {
        images[i] = readImage(folder + kTerrainFiles[i]);
        if (!images[i].valid())
            return layers;
    }
    for (unsigned int i = 0; i < kTerrainLayers; ++i)
        layers->setImage(i, images[i].get());
    return layers;
}

} // namespace Kelvor
