#pragma once

#include <osg/Matrixf>
#include <osg/Uniform>
#include <osg/ref_ptr>

namespace Kelvor {

// The six cameras that look out of the centre of a cube map, one per face
// in GL layer order (+X, -X, +Y, -Y, +Z, -Z), with the up vectors the cube
// map's texel layout needs. A layered draw uses them all at once.
class CKVSkyCubeFaces
{
public:
    static constexpr unsigned int kFaceCount = 6;

    // Perspective of 90 degrees and aspect 1, times the face's look-at from
    // the origin, in OpenSceneGraph's order (a row vector times view times
    // projection), which GLSL reads as projection * view.
    static osg::Matrixf viewProjection(unsigned int face);

    // The mat4[6] uniform "ViewProjectionMatrix" filled with all six.
    static osg::ref_ptr<osg::Uniform> createUniform();
};

} // namespace Kelvor
