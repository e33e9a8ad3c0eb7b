#include "apps/view/ViewModelSceneBuilder.h"

#include "apps/view/ViewContentBounds.h"
#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickStream/CKVGraphicsInterfaceImp.h"

#include <vector>

namespace Kelvor {

namespace {

// A level drawn only within a range: the levels of a tile set each hold the
// range in which their parent shows them. Without its range on the node, a
// parent that chooses among its children would draw every level at once.
bool hasRange(CKVRenderLOD const& level)
{
    CKVRenderLOD const everywhere;
    return level.getMinDistance() != everywhere.getMinDistance() ||
           level.getMaxDistance() != everywhere.getMaxDistance();
}

} // namespace

kv_shared_ptr<CKVSceneNode> ViewModelSceneBuilder::buildLevel(CKVRenderLOD const& level, unsigned int depth,
                                                              ViewContent& content)
{
    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    if (!node)
        return node;
    node->setName(("level " + std::to_string(depth)).c_str());
    if (level.getLoadMode() != CKVRenderLOD::kNone || level.getCullingChild() || hasRange(level)) {
        kv_shared_ptr<CKVCullingState> culling(new CKVCullingState);
        culling->setCullingMode(level.getLoadMode());
        culling->setCullingChild(level.getCullingChild());
        culling->setDistance(level.getMinDistance(), level.getMaxDistance());
        node->getStateSet()->addState(culling.get());
    }

    for (unsigned int i = 0; i < level.getNumGeometry(); ++i) {
        CKVRenderLOD::GeometryEntry const& entry = level.getGeometry(i);
        CKVGraphicsInterfaceImp shapes;
        if (!entry.geometry || !shapes.addGeometry(entry.geometry.get()))
            continue;
        std::vector<kv_shared_ptr<CKVRenderObject>> objects;
        std::vector<kv_shared_ptr<CKVBasicMaterial>> unused;
        shapes.getRenderObjectArray(objects, unused);
        CKVBasicMaterial const* material = entry.material ? entry.material.get() : mDefaultMaterial.get();
        for (kv_shared_ptr<CKVRenderObject> const& object : objects) {
            kv_shared_ptr<CKVSceneNode> shapeNode(CKVRenderCallback::createSceneNode());
            if (!shapeNode)
                return kv_shared_ptr<CKVSceneNode>();
            shapeNode->setName(("shape " + std::to_string(content.elements)).c_str());
            kv_shared_ptr<CKVSceneNodeState> state(new CKVMaterialState(material));
            shapeNode->getStateSet()->addState(state.get());
            CKVProgramParam param;
            material->getProgramParam(param);
            shapeNode->setProgramParam(param);
            if (!shapeNode->addRenderObject(object.get()) || !node->addChildNode(shapeNode.get()))
                continue;
            ++content.elements;
        }
        if (entry.geometry->isKindOf(CKVMesh::desc()))
            content.triangles += static_cast<CKVMesh const&>(*entry.geometry).getNumTriangles();
    }
    for (unsigned int i = 0; i < level.getNumChildLOD(); ++i) {
        CKVRenderLOD const* child = level.getChildLOD(i);
        if (!child)
            continue;
        kv_shared_ptr<CKVSceneNode> childNode = buildLevel(*child, depth + 1, content);
        if (!childNode)
            return childNode;
        node->addChildNode(childNode.get());
    }
    return node;
}

bool ViewModelSceneBuilder::build(CKVModelBase const& model, ViewContent& content)
{
    mError.clear();
    mDefaultMaterial = new CKVBasicMaterial;
    mDefaultMaterial->setRGB(200, 200, 200);
    content.root = CKVRenderCallback::createSceneNode();
    if (!content.root) {
        mError = "the rendering backend is not loaded (no scene node factory)";
        return false;
    }
    content.root->setName("model");
    for (unsigned int i = 0; i < model.getNumLOD(); ++i) {
        CKVRenderLOD const* level = model.getLOD(i);
        if (!level)
            continue;
        kv_shared_ptr<CKVSceneNode> node = buildLevel(*level, 0, content);
        if (!node) {
            mError = "the rendering backend refused to make a scene node";
            return false;
        }
        content.root->addChildNode(node.get());
    }
    content.box = ViewContentBounds::compute(*content.root);
    if (content.elements == 0 || !content.box.valid()) {
        mError = "the model holds nothing that can be drawn";
        content.root = nullptr;
        return false;
    }
    return true;
}

} // namespace Kelvor
