#pragma once

// Shared by the FBX tests: the sample rigs, assimp's own reading of them,
// and driving a character's update traversal at a chosen time.

#include "fbx/ReaderWriterFBX.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/scene.h>

#include <osg/FrameStamp>
#include <osg/Node>
#include <osgUtil/UpdateVisitor>

#include <string>

namespace Kelvor {

inline std::string const kSkeletonRig = "/usr/share/assimp/models/FBX/animation_with_skeleton.fbx";
inline std::string const kHuesitosRig = "/usr/share/assimp/models/FBX/huesitos.fbx";

// assimp's reading of a file with the reader's settings, for comparison.
inline aiScene const* readWithAssimp(Assimp::Importer& importer, std::string const& path)
{
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    return importer.ReadFile(path, ReaderWriterFBX::importFlags());
}

// One update traversal of `node` at simulation time `seconds`.
inline void updateAt(osg::Node& node, double seconds, unsigned int frame)
{
    osg::ref_ptr<osg::FrameStamp> stamp = new osg::FrameStamp;
    stamp->setFrameNumber(frame);
    stamp->setReferenceTime(seconds);
    stamp->setSimulationTime(seconds);
    osgUtil::UpdateVisitor visitor;
    visitor.setFrameStamp(stamp.get());
    visitor.setTraversalNumber(frame);
    node.accept(visitor);
}

} // namespace Kelvor
