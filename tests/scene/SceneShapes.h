#pragma once

// Shapes that the scene tests build host geometry from.

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"

#include <osg/Vec3f>

#include <vector>

namespace Kelvor {
namespace SceneShapes {

// An axis-aligned box with its own normals and texture coordinates per face.
inline kv_shared_ptr<CKVLogicBufferGeometry> boxShape(float sx, float sy, float sz)
{
    std::vector<float> vertices, normals, uvs;
    std::vector<unsigned int> indices;
    auto face = [&](osg::Vec3f n, osg::Vec3f u, osg::Vec3f v) {
        unsigned int const base = static_cast<unsigned int>(vertices.size() / 3);
        osg::Vec3f const centre(n.x() * sx, n.y() * sy, n.z() * sz);
        osg::Vec3f const du(u.x() * sx, u.y() * sy, u.z() * sz);
        osg::Vec3f const dv(v.x() * sx, v.y() * sy, v.z() * sz);
        osg::Vec3f const corners[4] = {centre - du - dv, centre + du - dv, centre + du + dv, centre - du + dv};
        float const tex[8] = {0, 0, 1, 0, 1, 1, 0, 1};
        for (int i = 0; i < 4; ++i) {
            vertices.insert(vertices.end(), {corners[i].x(), corners[i].y(), corners[i].z()});
            normals.insert(normals.end(), {n.x(), n.y(), n.z()});
            uvs.insert(uvs.end(), {tex[i * 2], tex[i * 2 + 1]});
        }
        indices.insert(indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
    };
    face({1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    face({-1, 0, 0}, {0, -1, 0}, {0, 0, 1});
    face({0, 1, 0}, {-1, 0, 0}, {0, 0, 1});
    face({0, -1, 0}, {1, 0, 0}, {0, 0, 1});
    face({0, 0, 1}, {1, 0, 0}, {0, 1, 0});
    face({0, 0, -1}, {-1, 0, 0}, {0, 1, 0});
    kv_shared_ptr<CKVLogicBufferGeometry> shape(new CKVLogicBufferGeometry);
    shape->setVertexData(CKVVertexBufferAttribute::kVertex, vertices.data(), static_cast<unsigned int>(vertices.size()));
    shape->setVertexData(CKVVertexBufferAttribute::kNormal, normals.data(), static_cast<unsigned int>(normals.size()));
    shape->setVertexData(CKVVertexBufferAttribute::kTexCoord, uvs.data(), static_cast<unsigned int>(uvs.size()));
    shape->setIndexData(indices.data(), static_cast<unsigned int>(indices.size()));
    return shape;
}

} // namespace SceneShapes
} // namespace Kelvor
