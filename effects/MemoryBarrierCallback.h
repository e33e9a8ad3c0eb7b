#pragma once

#include <osg/Camera>

namespace Kelvor {

// The culling pass's post-draw step: the instance counts and rows that its
// compute dispatches wrote must be visible to the indirect draws and vertex
// fetches of every later pass, and to the next frame's reset of the counts.
class MemoryBarrierCallback : public osg::Camera::DrawCallback
{
public:
    void operator()(osg::RenderInfo& renderInfo) const override;
};

} // namespace Kelvor
