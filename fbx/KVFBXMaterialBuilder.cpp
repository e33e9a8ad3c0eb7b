#include "fbx/KVFBXMaterialBuilder.h"

#include "scene/CKVMaterialBinder.h"
#include "scene/CKVTextureLoader.h"

#include <assimp/material.h>
#include <assimp/scene.h>
#include <assimp/texture.h>

#include <osg/BlendFunc>
#include <osg/Material>
#include <osg/Texture2D>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace Kelvor {

namespace {

unsigned int const kAlbedoUnit = 0;
char const* const kTextureDefine = "_USE_TEXTURE";

// Extensions of an embedded image by its first bytes, for files that leave
// the format hint empty.
std::string extensionByContent(unsigned char const* data, std::size_t size)
{
    struct Magic {
        char const* bytes;
        std::size_t length;
        char const* extension;
    };
    static Magic const magics[] = {{"\x89PNG", 4, "png"}, {"\xFF\xD8\xFF", 3, "jpg"}, {"BM", 2, "bmp"},
                                   {"DDS ", 4, "dds"},   {"II*\0", 4, "tif"},      {"MM\0*", 4, "tif"}};
    for (Magic const& magic : magics) {
        if (size >= magic.length && std::memcmp(data, magic.bytes, magic.length) == 0)
            return magic.extension;
    }
    // TGA has no signature; it is what files of that era embed most.
    return "tga";
}

osg::Vec4f baseColour(aiMaterial const& material)
{
    aiColor4D colour(1.0f, 1.0f, 1.0f, 1.0f);
    if (material.Get(AI_MATKEY_BASE_COLOR, colour) != AI_SUCCESS)
        material.Get(AI_MATKEY_COLOR_DIFFUSE, colour);
    float opacity = 1.0f;
    if (material.Get(AI_MATKEY_OPACITY, opacity) == AI_SUCCESS)
        colour.a = std::min(colour.a, opacity);
    return osg::Vec4f(colour.r, colour.g, colour.b, colour.a);
}

bool baseColourTexture(aiMaterial const& material, std::string& path)
{
    aiString found;
    for (aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}) {
        if (material.GetTexture(type, 0, &found) == AI_SUCCESS && found.length > 0) {
            path = found.C_Str();
            return true;
        }
    }
    return false;
}

} // namespace

KVFBXMaterialBuilder::KVFBXMaterialBuilder(aiScene const& scene, std::string const& fileDirectory)
    : mScene(scene)
    , mFileDirectory(fileDirectory)
{
}

osg::StateSet* KVFBXMaterialBuilder::stateSetFor(unsigned int materialIndex)
{
    if (materialIndex >= mScene.mNumMaterials || !mScene.mMaterials[materialIndex])
        return nullptr;
    osg::ref_ptr<osg::StateSet>& stateSet = mStateSets[materialIndex];
    if (!stateSet.valid())
        stateSet = build(*mScene.mMaterials[materialIndex]);
    return stateSet.get();
}

osg::ref_ptr<osg::StateSet> KVFBXMaterialBuilder::build(aiMaterial const& source)
{
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    osg::Vec4f const colour = baseColour(source);
    osg::ref_ptr<osg::Material> material = new osg::Material;
    material->setDiffuse(osg::Material::FRONT_AND_BACK, colour);
    material->setAmbient(osg::Material::FRONT_AND_BACK, colour);
    stateSet->setAttribute(material.get());

    std::string path;
    osg::ref_ptr<osg::Image> image = baseColourTexture(source, path) ? readTexture(path) : nullptr;
    bool translucent = colour.a() < 1.0f;
    if (image.valid()) {
        CKVTextureLoader::expandLuminance(*image);
        osg::ref_ptr<osg::Texture2D> texture = CKVTextureLoader::makeRepeatTexture(image.get());
        CKVMaterialBinder::bindTexture(stateSet.get(), texture.get(), "Albedo_Tx", kAlbedoUnit, true);
        stateSet->setDefine(kTextureDefine, osg::StateAttribute::ON);
        stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4f(0.0f, 0.0f, 0.0f, 0.0f)));
        translucent = translucent || image->isImageTranslucent();
    } else {
        stateSet->addUniform(new osg::Uniform("AlbedoColor_V4", colour));
    }
    if (translucent) {
        stateSet->setMode(GL_BLEND, osg::StateAttribute::ON);
        stateSet->setAttribute(new osg::BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA));
        stateSet->setRenderingHint(osg::StateSet::TRANSPARENT_BIN);
    }
    return stateSet;
}

osg::ref_ptr<osg::Image> KVFBXMaterialBuilder::readTexture(std::string const& path) const
{
    if (aiTexture const* embedded = mScene.GetEmbeddedTexture(path.c_str()))
        return decodeEmbedded(*embedded);

    // Paths written on Windows keep their backslashes.
    std::string written = path;
    std::replace(written.begin(), written.end(), '\\', '/');
    std::string const candidates[] = {
        written,
        osgDB::concatPaths(mFileDirectory, written),
        osgDB::concatPaths(mFileDirectory, osgDB::getSimpleFileName(written)),
    };
    for (std::string const& candidate : candidates) {
        if (candidate.empty() || !osgDB::fileExists(candidate))
            continue;
        if (osg::ref_ptr<osg::Image> image = osgDB::readImageFile(candidate, osgDB::Registry::instance()->getOptions()))
            return image;
    }
    return nullptr;
}

osg::ref_ptr<osg::Image> KVFBXMaterialBuilder::decodeEmbedded(aiTexture const& texture)
{
    if (!texture.pcData || texture.mWidth == 0)
        return nullptr;
    if (texture.mHeight == 0) {
        // mWidth bytes of an image file.
        auto const* bytes = reinterpret_cast<unsigned char const*>(texture.pcData);
        std::string extension = texture.achFormatHint;
        if (extension.empty() || extension.find_first_of("0123456789") == 0)
            extension = extensionByContent(bytes, texture.mWidth);
        osgDB::ReaderWriter* reader = osgDB::Registry::instance()->getReaderWriterForExtension(extension);
        if (!reader)
            return nullptr;
        std::istringstream stream(std::string(reinterpret_cast<char const*>(bytes), texture.mWidth));
        osgDB::ReaderWriter::ReadResult result = reader->readImage(stream);
        return result.validImage() ? osg::ref_ptr<osg::Image>(result.getImage()) : nullptr;
    }

    // Raw texels, BGRA, rows from the top; OpenSceneGraph keeps RGBA rows
    // from the bottom.
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(static_cast<int>(texture.mWidth), static_cast<int>(texture.mHeight), 1, GL_RGBA,
                         GL_UNSIGNED_BYTE);
    for (unsigned int y = 0; y < texture.mHeight; ++y) {
        aiTexel const* row = texture.pcData + (texture.mHeight - 1 - y) * texture.mWidth;
        unsigned char* out = image->data(0, static_cast<int>(y));
        for (unsigned int x = 0; x < texture.mWidth; ++x) {
            out[4 * x + 0] = row[x].r;
            out[4 * x + 1] = row[x].g;
            out[4 * x + 2] = row[x].b;
            out[4 * x + 3] = row[x].a;
        }
    }
    return image;
}

} // namespace Kelvor
