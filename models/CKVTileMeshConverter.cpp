#include "models/CKVTileMeshConverter.h"

#include <osg/Array>
#include <osg/Geometry>
#include <osg/PrimitiveSet>

#include <vector>

namespace Kelvor {

namespace {

osg::PrimitiveSet const* firstTriangleList(osg::Geometry const& geometry)
{
    for (unsigned int i = 0; i < geometry.getNumPrimitiveSets(); ++i) {
        osg::PrimitiveSet const* primitives = geometry.getPrimitiveSet(i);
        if (primitives && primitives->getMode() == GL_TRIANGLES)
            return primitives;
    }
    return nullptr;
}

// Tiles are written with 8-, 16- or 32-bit element lists, or with plain
// vertex runs; the mesh takes 32-bit triangles, so anything narrower is
// widened here rather than read past its end.
std::vector<CKVVec3<unsigned int>> triangleIndices(osg::PrimitiveSet const& primitives)
{
    std::vector<CKVVec3<unsigned int>> triangles;
    unsigned int const count = primitives.getNumIndices() / 3u;
    triangles.reserve(count);
    for (unsigned int t = 0; t < count; ++t) {
        triangles.push_back(CKVVec3<unsigned int>(primitives.index(3 * t), primitives.index(3 * t + 1),
                                                  primitives.index(3 * t + 2)));
    }
    return triangles;
}

template <class ArrayT>
ArrayT const* arrayOfType(osg::Array const* array, osg::Array::Type type)
{
    return array && array->getType() == type ? static_cast<ArrayT const*>(array) : nullptr;
}

// The host arrays are read straight from OpenSceneGraph's storage.
static_assert(sizeof(CKVVec3<float>) == sizeof(osg::Vec3f), "three packed floats");
static_assert(sizeof(CKVVec2<float>) == sizeof(osg::Vec2f), "two packed floats");

} // namespace

kv_shared_ptr<CKVMesh> CKVTileMeshConverter::convert(osg::Geometry const& geometry)
{
    osg::Vec3Array const* vertices = arrayOfType<osg::Vec3Array>(geometry.getVertexArray(), osg::Array::Vec3ArrayType);
    if (!vertices || vertices->empty() || geometry.getNumPrimitiveSets() == 0)
        return nullptr;
    osg::PrimitiveSet const* primitives = firstTriangleList(geometry);
    if (!primitives)
        return nullptr;

    unsigned int const numPoints = static_cast<unsigned int>(vertices->size());
    kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
    mesh->setPoint(reinterpret_cast<CKVVec3<float> const*>(vertices->getDataPointer()), numPoints);

    std::vector<CKVVec3<unsigned int>> const triangles = triangleIndices(*primitives);
    mesh->setTriangle(triangles.empty() ? nullptr : triangles.data(), static_cast<unsigned int>(triangles.size()));

    // Arrays bound per primitive or overall have another length and are dropped.
    osg::Vec3Array const* normals = arrayOfType<osg::Vec3Array>(geometry.getNormalArray(), osg::Array::Vec3ArrayType);
    if (normals && normals->size() == numPoints)
        mesh->setNormal(reinterpret_cast<CKVVec3<float> const*>(normals->getDataPointer()), numPoints);
    osg::Vec2Array const* uv = arrayOfType<osg::Vec2Array>(geometry.getTexCoordArray(0), osg::Array::Vec2ArrayType);
    if (uv && uv->size() == numPoints)
        mesh->setUV(reinterpret_cast<CKVVec2<float> const*>(uv->getDataPointer()), numPoints);
    return mesh;
}

} // namespace Kelvor
