#pragma once

#include <osg/Camera>
#include <osg/Matrixd>

namespace Kelvor {

// The main camera. Besides the stock matrices it keeps the projection the
// frame was really culled with (jitter included), which the root stores at
// each cull of the main pass; turning a depth back into a world position
// needs that projection, not the one the host set.
class CKVOSGCamera : public osg::Camera
{
public:
    CKVOSGCamera();
    CKVOSGCamera(CKVOSGCamera const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_Object(kvosg, CKVOSGCamera)

    void setCullProjection(osg::Matrixd const& projection);
    osg::Matrixd getCullProjection() const { return mCullProjection; }

protected:
    ~CKVOSGCamera() override;

private:
    osg::Matrixd mCullProjection;
};

} // namespace Kelvor
