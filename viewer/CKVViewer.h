#pragma once

#include <osgViewer/Viewer>

namespace Kelvor {

// The backend's viewer: the stock single-threaded frame with three changes.
// The swap can be switched off for one frame (a capture renders off screen
// and must leave the window as it was); the window check and the done test
// happen in the render context's tick before the frame, not here; and every
// camera gets a CKVRenderer.
class CKVViewer : public osgViewer::Viewer
{
public:
    CKVViewer();
    CKVViewer(CKVViewer const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_Object(kvosg, CKVViewer)

    void setSwapBuffers(bool swapBuffers) { mSwapBuffers = swapBuffers; }
    bool getSwapBuffers() const { return mSwapBuffers; }

    void renderingTraversals() override;

    osg::GraphicsOperation* createRenderer(osg::Camera* camera) override;

protected:
    ~CKVViewer() override;

private:
    void collectSceneStats(unsigned int frameNumber);

    bool mSwapBuffers = true;
};

} // namespace Kelvor
