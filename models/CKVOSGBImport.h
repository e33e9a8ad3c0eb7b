#pragma once

#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickStream/CKVModelImportExport.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <deque>
#include <string>

namespace osg {
class Geometry;
class Group;
class LOD;
class Node;
class StateSet;
} // namespace osg

namespace Kelvor {

// Imports one OpenSceneGraph binary tile tree: the whole pyramid of the tile
// is read at once, and its levels, meshes and materials become one
// CKVRenderLOD tree. Also the core that the tile-set importers run per tile.
class CKVOSGBImport : public CKVModelImportExport
{
    KV_DECLARE_RUNTIME_CLASS(CKVOSGBImport)
public:
    CKVOSGBImport();
    ~CKVOSGBImport() override;

    CKVOSGBImport(CKVOSGBImport const&) = delete;
    CKVOSGBImport& operator=(CKVOSGBImport const&) = delete;

    // A model of one LOD tree; false and a null model when the tile did not
    // load. Uses this object's working state: not for concurrent calls.
    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) override;

    // The tile's LOD tree, or null when the file does not read. Textures
    // embedded in the tile are written beside it, once, under their own names.
    kv_shared_ptr<CKVRenderLOD> loadTile(char const* path);

private:
    void walkNode(osg::Node& node, CKVRenderLOD& lod);
    void walkGroup(osg::Group& group, CKVRenderLOD& lod);
    void walkLOD(osg::LOD& node, CKVRenderLOD& lod);
    void addGeometry(osg::Geometry const& geometry, CKVRenderLOD& lod);

    void pushMaterial(osg::StateSet const* stateSet);
    void popMaterial();
    // The path of the first embedded texture image, written beside the tile
    // when no file is there yet; "" when there is none or it cannot be written.
    std::string unpackTexture(osg::StateSet const& stateSet) const;

    // Materials of the nodes being walked, innermost last. Never empty: the
    // bottom entry is the default material.
    std::deque<kv_shared_ptr<CKVBasicMaterial>> m_materials;
    // The folder of the tile being imported.
    std::string m_basePath;
};

} // namespace Kelvor
