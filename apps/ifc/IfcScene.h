#pragma once

#include "apps/ifc/IfcProductTable.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <vector>

namespace Kelvor {

// An imported model as host content. The tree under `root` is complete but
// not yet part of any scene: attach it with a CKVRCAttachSceneData (or
// insert it under a node with a CKVRCInsertSceneNode).
//
// Tree: root -> one node per product drawn on its own (placed by its
// transform state) -> one node per colour (material state) holding one
// geometry with the product's part; and root -> one node per shared shape
// -> one node per colour holding one instanced geometry: the shape as a
// part and an instance per product that shows it.
struct IfcScene
{
    kv_shared_ptr<CKVSceneNode> root;
    IfcProductTable products;
    // Every geometry of the tree, and every distinct material.
    std::vector<kv_shared_ptr<CKVBufferGeometry>> geometries;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> materials;

    void clear()
    {
        root = nullptr;
        products.clear();
        geometries.clear();
        materials.clear();
    }
};

} // namespace Kelvor
