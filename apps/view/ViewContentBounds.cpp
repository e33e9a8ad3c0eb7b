#include "apps/view/ViewContentBounds.h"

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVTransformState.h"

#include <vector>

namespace Kelvor {

namespace {

CKVBndBox partBox(CKVLogicBufferGeometry const& part)
{
    CKVBndBox box;
    std::vector<float> const& points = part.getVertexData(CKVVertexBufferAttribute::kVertex);
    for (std::size_t i = 0; i + 2 < points.size(); i += 3)
        box.addPoint(CKVPoint3D(points[i], points[i + 1], points[i + 2]));
    return box;
}

// Instances place the geometry's parts; without instances the parts stand
// where they are.
CKVBndBox geometryBox(CKVBufferGeometry const& geometry)
{
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers;
    geometry.getLogicBuffers(buffers);
    CKVBndBox shape;
    std::vector<CKVMatrix3D> placements;
    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : buffers) {
        if (buffer->isInstance())
            placements.push_back(buffer->getInstanceMatrix());
        else
            shape.addBndBox(partBox(*buffer));
    }
    if (placements.empty() || !shape.valid())
        return shape;
    CKVBndBox placed;
    for (CKVMatrix3D const& matrix : placements)
        placed.addBndBox(CKVBndBox(shape).transformBy(matrix));
    return placed;
}

CKVBndBox nodeBox(CKVSceneNode const& node)
{
    CKVBndBox box;
    for (unsigned int i = 0; i < node.getNumRenderObject(); ++i) {
        CKVRenderObject const* object = node.getRenderObject(i);
        if (object && object->isKindOf(CKVBufferGeometry::desc()))
            box.addBndBox(geometryBox(static_cast<CKVBufferGeometry const&>(*object)));
    }
    for (unsigned int i = 0; i < node.getNumChildNode(); ++i) {
        if (CKVSceneNode const* child = node.getChildNode(i))
            box.addBndBox(nodeBox(*child));
    }
    CKVSceneNodeState const* state = node.getStateSet()->getState(CKVSceneNodeState::kTransform);
    if (box.valid() && state && state->isKindOf(CKVTransformState::desc())) {
        auto const& transform = static_cast<CKVTransformState const&>(*state);
        if (transform.getTransformMode() == CKVTransformState::kMatrix)
            box.transformBy(transform.getMatrix());
    }
    return box;
}

} // namespace

CKVBndBox ViewContentBounds::compute(CKVSceneNode const& root)
{
    return nodeBox(root);
}

} // namespace Kelvor
