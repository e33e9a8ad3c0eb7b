#include "picking/CKVPickHitResolver.h"

#include "picking/CKVInstanceMatrix.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVOSGText2D.h"
#include "scene/CKVOSGTransformNode.h"

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVSelectionResult.h"
#include "TarnwickRender/CKVTextGeometry.h"

#include <algorithm>
#include <cstring>

namespace Kelvor {

namespace {

bool isClass(osg::Object const* object, char const* name)
{
    return std::strcmp(object->className(), name) == 0;
}

// The host scene node that holds what was hit: the nearest transform node at
// or above `from` (which may be one past the path's end).
CKVSceneNode const* sceneNodeAbove(osg::NodePath const& path, std::size_t from)
{
    for (std::size_t i = std::min(from + 1, path.size()); i-- > 0;)
    {
        if (path[i] && isClass(path[i], CKVOSGTransformNode::s_className))
            return static_cast<CKVOSGTransformNode const*>(path[i])->tryGetSceneNode();
    }
    return nullptr;
}

} // namespace

bool CKVPickHitResolver::resolve(Hit const& hit, CKVSelectionResult& result)
{
    // Read in place: a selection resolves every record it lists.
    static osg::NodePath const noPath;
    osg::NodePath const& path = hit.nodePath ? *hit.nodePath : noPath;
    // The visitor's path already ends in the drawable when it was reached
    // as a child; a drawable tested straight from a geode may be missing,
    // and then stands one past the path's end.
    bool const drawableMissing = hit.drawable && (path.empty() || path.back() != hit.drawable);
    std::size_t const length = path.size() + (drawableMissing ? 1u : 0u);

    for (std::size_t i = length; i-- > 0;)
    {
        osg::Node const* node = i < path.size() ? path[i] : hit.drawable;
        if (!node)
            continue;
        CKVLogicRenderObject const* logic = nullptr;
        bool instance = false;
        if (isClass(node, CKVOSGGeometry::s_className))
        {
            if (CKVBufferGeometry const* host = static_cast<CKVOSGGeometry const*>(node)->getHostGeometry())
            {
                CKVLogicBufferGeometry const* buffer = host->queryLogicBuffer(hit.instanceIndex, hit.primitiveIndex);
                logic = buffer;
                instance = buffer && buffer->isInstance();
            }
        }
        else if (isClass(node, CKVOSGText2D::s_className))
        {
            if (CKVTextGeometry const* host = static_cast<CKVOSGText2D const*>(node)->getHostGeometry())
                logic = host->getLogicObject();
        }
        if (!logic || !logic->getDrawable())
            continue;

        osg::Vec3d const world = worldPoint(hit.localPoint, hit.matrix);
        result.setPosition(CKVPoint3D(world.x(), world.y(), world.z()));
        result.setDrawable(logic->getDrawable());
        result.setInstanceIndex(instance ? hit.instanceIndex : CKVSelectionResult::kNoInstance);
        result.setSceneNode(sceneNodeAbove(path, i));
        return true;
    }
    return false;
}

osg::Vec3d CKVPickHitResolver::worldPoint(osg::Vec3d const& local, osg::RefMatrixd const* matrix)
{
    return matrix ? local * osg::Matrixd(*matrix) : local;
}

bool CKVPickHitResolver::resolve(osgUtil::LineSegmentIntersector::Intersection const& record,
                                 CKVSelectionResult& result)
{
    Hit hit;
    hit.nodePath = &record.nodePath;
    hit.drawable = record.drawable.get();
    hit.matrix = record.matrix.get();
    hit.localPoint = record.localIntersectionPoint;
    hit.primitiveIndex = record.primitiveIndex;
    hit.instanceIndex = CKVInstanceMatrix::instanceIndexOf(record.matrix.get());
    return resolve(hit, result);
}

bool CKVPickHitResolver::resolve(CKVOSGPolytopeIntersector const& intersector,
                                 CKVOSGPolytopeIntersector::Hit const& hit, CKVSelectionResult& result)
{
    CKVOSGPolytopeIntersector::Frame const& frame = intersector.frameOf(hit);
    Hit shared;
    shared.nodePath = &intersector.pathOf(hit);
    shared.drawable = frame.drawable.get();
    shared.matrix = frame.matrix.get();
    shared.localPoint = osg::Vec3d(hit.localPoint);
    shared.primitiveIndex = hit.primitiveIndex;
    shared.instanceIndex = frame.instanceIndex;
    return resolve(shared, result);
}

} // namespace Kelvor
