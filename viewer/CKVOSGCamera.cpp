#include "viewer/CKVOSGCamera.h"

namespace Kelvor {

CKVOSGCamera::CKVOSGCamera() = default;

CKVOSGCamera::CKVOSGCamera(CKVOSGCamera const& other, osg::CopyOp const& copyop)
    : osg::Camera(other, copyop)
    , mCullProjection(other.mCullProjection)
{
}

CKVOSGCamera::~CKVOSGCamera() = default;

void CKVOSGCamera::setCullProjection(osg::Matrixd const& projection)
{
    if (&projection != &mCullProjection)
        mCullProjection = projection;
}

} // namespace Kelvor
