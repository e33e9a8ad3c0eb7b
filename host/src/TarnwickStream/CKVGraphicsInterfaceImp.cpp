#include "TarnwickStream/CKVGraphicsInterfaceImp.h"

#include "TarnwickGeometry/CKVGeometry.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRenderCallback.h"

#include <vector>

namespace Kelvor {

namespace {

// Triangles of a face list; faces of more than three points become fans,
// which suits the convex faces that shapes hand out.
std::vector<unsigned int> triangulate(CKVRenderBrepFaceData const& data)
{
    std::vector<unsigned int> triangles;
    int const* list = data.getFacelistArray();
    unsigned int const size = data.getNumFacelist();
    for (unsigned int i = 0; list && i < size;) {
        unsigned int const n = static_cast<unsigned int>(list[i]);
        int const* face = list + i + 1;
        for (unsigned int k = 1; k + 1 < n; ++k) {
            triangles.push_back(static_cast<unsigned int>(face[0]));
            triangles.push_back(static_cast<unsigned int>(face[k]));
            triangles.push_back(static_cast<unsigned int>(face[k + 1]));
        }
        i += n + 1;
    }
    return triangles;
}

} // namespace

CKVGraphicsInterfaceImp::CKVGraphicsInterfaceImp() : mCurrentMaterial(new CKVBasicMaterial)
{
}

CKVGraphicsInterfaceImp::~CKVGraphicsInterfaceImp() = default;

void CKVGraphicsInterfaceImp::setCurrentMaterial(CKVBasicMaterial* material)
{
    mCurrentMaterial = material ? material : new CKVBasicMaterial;
}

bool CKVGraphicsInterfaceImp::addGeometry(CKVGeometry const* shape)
{
    if (!shape)
        return false;
    kv_shared_ptr<CKVRenderGeometryData> data = shape->getRenderData(CKVRenderGeometryData::kSampleNormal);
    if (!data || !data->isKindOf(CKVRenderBrepFaceData::desc()) || data->getNumPoints() == 0)
        return false;
    CKVRenderBrepFaceData const& faces = static_cast<CKVRenderBrepFaceData const&>(*data);
    std::vector<unsigned int> const triangles = triangulate(faces);
    if (triangles.empty())
        return false;

    // The shape becomes one part of a fresh geometry; packing it waits for
    // the render thread, where the backend makes its buffers.
    kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
    unsigned int const numPoints = faces.getNumPoints();
    part->setVertexData(CKVVertexBufferAttribute::kVertex, &faces.getPointsArray()->x, 3 * numPoints);
    if (CKVVec3<float> const* normals = faces.getNormalsArray())
        part->setVertexData(CKVVertexBufferAttribute::kNormal, &normals->x, 3 * numPoints);
    if (CKVVec2<float> const* uv = faces.getUVArray())
        part->setVertexData(CKVVertexBufferAttribute::kTexCoord, &uv->x, 2 * numPoints);
    part->setIndexData(triangles.data(), static_cast<unsigned int>(triangles.size()));

    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    if (!geometry || !geometry->addLogicBuffer(part.get()))
        return false;
    return addRenderObject(geometry.get());
}

bool CKVGraphicsInterfaceImp::addRenderObject(CKVRenderObject* object)
{
    if (!object)
        return false;
    mObjects.emplace_back(object);
    mMaterials.push_back(mCurrentMaterial);
    return true;
}

void CKVGraphicsInterfaceImp::clear()
{
    mObjects.clear();
    mMaterials.clear();
}

void CKVGraphicsInterfaceImp::getRenderObjectArray(std::vector<kv_shared_ptr<CKVRenderObject>>& objects,
                                                   std::vector<kv_shared_ptr<CKVBasicMaterial>>& materials) const
{
    objects.insert(objects.end(), mObjects.begin(), mObjects.end());
    materials.insert(materials.end(), mMaterials.begin(), mMaterials.end());
}

} // namespace Kelvor
