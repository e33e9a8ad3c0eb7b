#pragma once

// Shapes that the scene tests build host geometry from.

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"

#include <osg/Vec3f>

#include <cmath>
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

// A UV sphere of `radius` around the origin, z up, with unit normals.
inline kv_shared_ptr<CKVLogicBufferGeometry> sphereShape(float radius, unsigned int sectors = 32,
                                                         unsigned int stacks = 16)
{
    std::vector<float> vertices, normals, uvs;
    std::vector<unsigned int> indices;
    float const pi = 3.14159265f;
    for (unsigned int i = 0; i <= stacks; ++i) {
        float const latitude = -pi / 2 + pi * static_cast<float>(i) / static_cast<float>(stacks);
        for (unsigned int j = 0; j <= sectors; ++j) {
            float const longitude = 2 * pi * static_cast<float>(j) / static_cast<float>(sectors);
            osg::Vec3f const n(std::cos(latitude) * std::cos(longitude), std::cos(latitude) * std::sin(longitude),
                               std::sin(latitude));
            vertices.insert(vertices.end(), {n.x() * radius, n.y() * radius, n.z() * radius});
            normals.insert(normals.end(), {n.x(), n.y(), n.z()});
            uvs.insert(uvs.end(), {static_cast<float>(j) / sectors, static_cast<float>(i) / stacks});
        }
    }
    for (unsigned int i = 0; i < stacks; ++i) {
        for (unsigned int j = 0; j < sectors; ++j) {
            unsigned int const a = i * (sectors + 1) + j;
            unsigned int const b = a + sectors + 1;
            indices.insert(indices.end(), {a, a + 1, b, a + 1, b + 1, b});
        }
    }
    kv_shared_ptr<CKVLogicBufferGeometry> shape(new CKVLogicBufferGeometry);
    shape->setVertexData(CKVVertexBufferAttribute::kVertex, vertices.data(), static_cast<unsigned int>(vertices.size()));
    shape->setVertexData(CKVVertexBufferAttribute::kNormal, normals.data(), static_cast<unsigned int>(normals.size()));
    shape->setVertexData(CKVVertexBufferAttribute::kTexCoord, uvs.data(), static_cast<unsigned int>(uvs.size()));
    shape->setIndexData(indices.data(), static_cast<unsigned int>(indices.size()));
    return shape;
}

} // namespace SceneShapes
} // namespace Kelvor
