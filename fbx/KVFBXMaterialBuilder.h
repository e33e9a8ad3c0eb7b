#pragma once

#include <osg/Image>
#include <osg/StateSet>
#include <osg/ref_ptr>

#include <map>
#include <string>

struct aiMaterial;
struct aiScene;
struct aiTexture;

namespace Kelvor {

// The state sets of an imported file's materials, one per material, shared
// by the meshes that use it. A material carries its base colour (the base
// colour of physically based files, else the diffuse colour, with the
// opacity as alpha) as "AlbedoColor_V4" and as an osg::Material; its base
// colour texture goes to "Albedo_Tx" with "_USE_TEXTURE", as the surface
// programs read it, and then the colour uniform is zero so that programs
// adding both see the texture alone. Textures are embedded ones or files,
// looked for as written, beside the file and, for paths from other
// machines, by their simple name beside the file.
class KVFBXMaterialBuilder
{
public:
    KVFBXMaterialBuilder(aiScene const& scene, std::string const& fileDirectory);

    // Null for an index the file does not have.
    osg::StateSet* stateSetFor(unsigned int materialIndex);

    // The image of a texture the file embeds: compressed (an image file's
    // bytes) or raw texels.
    static osg::ref_ptr<osg::Image> decodeEmbedded(aiTexture const& texture);

private:
    osg::ref_ptr<osg::StateSet> build(aiMaterial const& material);
    osg::ref_ptr<osg::Image> readTexture(std::string const& path) const;

    aiScene const& mScene;
    std::string mFileDirectory;
    std::map<unsigned int, osg::ref_ptr<osg::StateSet>> mStateSets;
};

} // namespace Kelvor
