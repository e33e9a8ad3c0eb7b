#pragma once

#include <osg/Camera>
#include <osg/ref_ptr>

namespace Kelvor {

class HiZGeometry;

// The depth pre-pass's post-draw step: builds the depth chain from what the
// pass has just drawn.
class HiZCallback : public osg::Camera::DrawCallback
{
public:
    explicit HiZCallback(HiZGeometry* geometry);
    void operator()(osg::RenderInfo& renderInfo) const override;

protected:
    ~HiZCallback() override;

private:
    osg::ref_ptr<HiZGeometry> mGeometry;
};

} // namespace Kelvor
