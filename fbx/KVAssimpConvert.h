#pragma once

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>
#include <assimp/vector3.h>

#include <osg/Matrixd>
#include <osg/Quat>
#include <osg/Vec3>

namespace Kelvor {

// assimp keeps column-vector matrices in row-major order; OpenSceneGraph
// keeps row-vector matrices. The conversion is a transposition, so a
// product A * B on assimp's side is B * A on ours.
inline osg::Matrixd toOsgMatrix(aiMatrix4x4 const& m)
{
    return osg::Matrixd(m.a1, m.b1, m.c1, m.d1,
                        m.a2, m.b2, m.c2, m.d2,
                        m.a3, m.b3, m.c3, m.d3,
                        m.a4, m.b4, m.c4, m.d4);
}

inline osg::Vec3 toOsgVec3(aiVector3D const& v)
{
    return osg::Vec3(v.x, v.y, v.z);
}

inline osg::Quat toOsgQuat(aiQuaternion const& q)
{
    return osg::Quat(q.x, q.y, q.z, q.w);
}

} // namespace Kelvor
