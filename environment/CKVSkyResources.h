#pragma once

#include <osg/Texture2D>
#include <osg/Texture2DArray>
#include <osg/ref_ptr>

#include <string>

namespace Kelvor {

// The images the sky reads from the resource directory: the star noise and
// the ground layers of the sky terrain. A missing file leaves its texture
// without an image (it then reads black) rather than failing the sky.
class CKVSkyResources
{
public:
    static constexpr unsigned int kTerrainLayers = 5;

    // "<resources>/skybox/grayNoise.png", linear and repeating.
    static osg::ref_ptr<osg::Texture2D> loadStarNoise();

    // "<resources>/terrain/": grass, rock, rock2, snow_flat and snow as
    // layers 0 to 4; all five or none.
    static osg::ref_ptr<osg::Texture2DArray> loadTerrainLayers();

    // The resource directory as the host reports it.
    static std::string resourceDirectory();
};

} // namespace Kelvor
