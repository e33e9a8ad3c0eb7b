#include "environment/CKVSkyCubeFaces.h"

#include <osg/Matrixd>
#include <osg/Vec3d>

namespace Kelvor {

namespace {

// The sky is a direction lookup: any near and far around the unit cube do.
constexpr double kFieldOfView = 90.0;
constexpr double kNear = 0.1;
constexpr double kFar = 10.0;

struct Face
{
    osg::Vec3d target;
    osg::Vec3d up;
};

// GL's cube map faces are seen from inside with t growing downwards, hence
// the negative up vectors on the side faces.
Face const kFaces[CKVSkyCubeFaces::kFaceCount] = {
    {{1.0, 0.0, 0.0}, {0.0, -1.0, 0.0}},  {{-1.0, 0.0, 0.0}, {0.0, -1.0, 0.0}},
    {{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}},   {{0.0, -1.0, 0.0}, {0.0, 0.0, -1.0}},
    {{0.0, 0.0, 1.0}, {0.0, -1.0, 0.0}},  {{0.0, 0.0, -1.0}, {0.0, -1.0, 0.0}},
};

} // namespace

osg::Matrixf CKVSkyCubeFaces::viewProjection(unsigned int face)
{
    Face const& f = kFaces[face < kFaceCount ? face : 0];
    osg::Matrixd const view = osg::Matrixd::lookAt(osg::Vec3d(), f.target, f.up);
    osg::Matrixd const projection = osg::Matrixd::perspective(kFieldOfView, 1.0, kNear, kFar);
    return osg::Matrixf(view * projection);
}

osg::ref_ptr<osg::Uniform> CKVSkyCubeFaces::createUniform()
{
    osg::ref_ptr<osg::Uniform> uniform =
        new osg::Uniform(osg::Uniform::FLOAT_MAT4, "ViewProjectionMatrix", kFaceCount);
    for (unsigned int face = 0; face < kFaceCount; ++face)
        uniform->setElement(face, viewProjection(face));
    return uniform;
}

} // namespace Kelvor
