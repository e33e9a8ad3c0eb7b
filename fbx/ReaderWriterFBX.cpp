#include "fbx/ReaderWriterFBX.h"

#include "fbx/KVFBXAnimationBuilder.h"
#include "fbx/KVFBXSceneBuilder.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

namespace Kelvor {

ReaderWriterFBX::ReaderWriterFBX()
{
    supportsExtension("fbx", "FBX format");
    supportsOption("Embedded", "(Write option) Embed textures in FBX file");
    supportsOption("UseFbxRoot", "(Read/write option) If the source OSG root node is a simple group with no stateset, the writer will put its children directly under the FBX root, and vice-versa for reading");
    supportsOption("LightmapTextures", "(Read option) Interpret texture maps as overriding the lighting. 3D Studio Max may export files that should be interpreted in this way.");
    supportsOption("TessellatePolygons", "(Read option) Tessellate mesh polygons. If the model contains concave polygons this may be necessary, however tessellating can be very slow and may erroneously produce triangle shards.");
}

void ReaderWriterFBX::registerWithRegistry()
{
    // A proxy, as a plugin would have: it adds the reader-writer now and
    // removes it again when the library goes.
    static osgDB::RegisterReaderWriterProxy<ReaderWriterFBX> const proxy;
}

unsigned int ReaderWriterFBX::importFlags()
{
    return aiProcess_Triangulate | aiProcess_LimitBoneWeights | aiProcess_GenSmoothNormals;
}

int ReaderWriterFBX::clipIndex(aiScene const& scene, std::string const& name)
{
    if (scene.mNumAnimations == 0)
        return -1;
    for (unsigned int a = 0; a < scene.mNumAnimations; ++a) {
        // Some tools prefix a take with its armature: "Armature|walk".
        std::string const clip = scene.mAnimations[a]->mName.C_Str();
        std::size_t const bar = clip.rfind('|');
        if (clip == name || (bar != std::string::npos && clip.compare(bar + 1, std::string::npos, name) == 0))
            return static_cast<int>(a);
    }
    return 0;
}

osgDB::ReaderWriter::ReadResult ReaderWriterFBX::readNode(std::string const& file, Options const* options) const
{
    return readNode(file, options, nullptr);
}

osgDB::ReaderWriter::ReadResult ReaderWriterFBX::readNode(std::string const& file, Options const* options,
                                                          osg::ref_ptr<CKVFBXSceneHandle>* scene) const
{
    std::string const extension = osgDB::getLowerCaseFileExtension(file);
    if (!acceptsExtension(extension))
        return ReadResult::FILE_NOT_HANDLED;
    std::string const path = osgDB::findDataFile(file, options);
    if (path.empty())
        return ReadResult::FILE_NOT_FOUND;

    Assimp::Importer importer;
    // One node per FBX node: assimp folds pivots and pre-rotations into the
    // node's transform and its keys instead of adding helper nodes, so
    // that clips and skeletons agree on node names.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    aiScene const* imported = importer.ReadFile(path, importFlags());
    if (!imported || !imported->mRootNode)
        return ReadResult::ERROR_IN_READING_FILE;

    bool const applyToKnownSkeleton = scene && scene->valid();
    CKVFBXSceneHandle const* skeleton = applyToKnownSkeleton ? scene->get() : nullptr;

    osg::ref_ptr<CKVOSGAnimationManager> manager = m_animationManager;
    if (!manager.valid())
        manager = new CKVOSGAnimationManager;
    osg::ref_ptr<osgAnimation::Animation> last;
    int const wanted = m_clipName.empty() ? -1 : clipIndex(*imported, m_clipName);
    for (unsigned int a = 0; a < imported->mNumAnimations; ++a) {
        if (wanted >= 0 && a != static_cast<unsigned int>(wanted))
            continue;
        osg::ref_ptr<osgAnimation::Animation> clip = KVFBXAnimationBuilder::build(*imported->mAnimations[a], skeleton);
        if (!clip.valid())
            continue;
        manager->registerAnimation(clip.get());
        last = clip;
    }
    if (last.valid())
        manager->setLastAnimation(last.get());

    if (applyToKnownSkeleton) {
        osg::ref_ptr<osg::Group> empty = new osg::Group;
        empty->setName(osgDB::getSimpleFileName(path));
        return empty.release();
    }

    osg::ref_ptr<CKVFBXSceneHandle> handle = scene ? new CKVFBXSceneHandle : nullptr;
    osg::ref_ptr<osg::Group> root = KVFBXSceneBuilder::build(*imported, handle.get(), osgDB::getFilePath(path));
    root->setUpdateCallback(manager.get());
    if (handle.valid()) {
        handle->setSourceFile(path);
        *scene = handle;
    }
    return root.release();
}

} // namespace Kelvor
