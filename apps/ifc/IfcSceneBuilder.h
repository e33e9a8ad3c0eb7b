#pragma once

#include "apps/ifc/IfcProductGeometry.h"
#include "apps/ifc/IfcProgressCallback.h"
#include "apps/ifc/IfcScene.h"
#include "apps/ifc/IfcShape.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVDrawable.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Kelvor {

// Turns extracted products, sorted into shapes, into host content (see
// IfcScene for the tree). Nodes and geometries come from the factories
// registered with CKVRenderCallback, so the backend's own classes are made
// when it is loaded. A colour with alpha below 1 gets a material with sorted
// transparency, so that it is drawn in the depth-sorted bin. Each product
// has a CKVDrawable whose id is its entity id, carried by its part or
// instance, so that a pick leads back to it through the product table.
class IfcSceneBuilder
{
public:
    IfcSceneBuilder();
    ~IfcSceneBuilder();

    void setProgressCallback(IfcProgressCallback callback) { mProgress = std::move(callback); }

    // `shapes` must cover every product exactly once (IfcShapeIndex does).
    // False with getError() set when a factory is missing or refuses; the
    // scene is cleared then.
    bool build(std::vector<IfcProductGeometry> const& products, std::vector<IfcShape> const& shapes,
               IfcScene& scene);

    std::string const& getError() const { return mError; }

private:
    bool buildSingle(IfcProductGeometry const& product, std::size_t index, IfcScene& scene);
    bool buildShared(std::vector<IfcProductGeometry> const& products, IfcShape const& shape, std::size_t number,
                     IfcScene& scene);
    // A node in the mesh's material holding one geometry with `buffers`,
    // added under `parent`.
    bool addColourNode(CKVSceneNode& parent, IfcMesh const& mesh,
                       std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& buffers, bool instanced,
                       IfcScene& scene);
    kv_shared_ptr<CKVSceneNode> makeNode(std::string const& name);
    CKVBasicMaterial* materialFor(std::array<float, 4> const& rgba, IfcScene& scene);
    bool fail(std::string message, IfcScene& scene);

    IfcProgressCallback mProgress;
    std::string mError;
    std::map<std::uint32_t, CKVBasicMaterial*> mMaterials;
    std::vector<kv_shared_ptr<CKVDrawable>> mDrawables;
};

} // namespace Kelvor
