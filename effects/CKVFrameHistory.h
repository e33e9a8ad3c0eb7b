#pragma once

#include <osg/Array>
#include <osg/Matrixd>
#include <osg/Matrixf>
#include <osg/Uniform>
#include <osg/Vec2d>
#include <osg/ref_ptr>

#include <vector>

namespace osg {
class Viewport;
}

namespace Kelvor {

// What anti-aliasing needs of the frame before: last frame's view,
// projection and view-projection (written into the CameraInfo block for the
// velocity output), and the sub-pixel jitter of this and the last frame.
class CKVFrameHistory
{
public:
    // Float offset of the three history matrices in the CameraInfo block
    // (byte 256).
    static constexpr unsigned int kHistoryFirstFloat = 64;

    explicit CKVFrameHistory(osg::FloatArray* cameraInfo);

    // Offsets in pixels, taken in turn. Without samples there is no jitter.
    void setJitterSamples(std::vector<osg::Vec2d> const& samples);
    std::vector<osg::Vec2d> const& getJitterSamples() const { return mJitterSamples; }

    // Moves the projection by the next sample, in clip units of the
    // viewport, and sets "current_prev_jitter".
    void applyJitter(osg::Matrixd& projection, osg::Viewport const& viewport);

    // With `writeBlock`, writes last frame's matrices into the block (into
    // the GL buffer of context 0 directly when it exists: the state writes
    // the rest of the block itself). Either way keeps this frame's for the
    // next.
    void writeAndAdvance(osg::Matrixf const& view, osg::Matrixf const& projection, bool writeBlock);

    osg::Uniform* getJitterUniform() const { return mJitterUniform.get(); }
    osg::Vec2d const& getJitter() const { return mJitter; }
    osg::Vec2d const& getLastJitter() const { return mLastJitter; }
    osg::Matrixf const& getLastView() const { return mLastView; }
    osg::Matrixf const& getLastProjection() const { return mLastProjection; }
    osg::Matrixf const& getLastViewProjection() const { return mLastViewProjection; }

private:
    osg::ref_ptr<osg::FloatArray> mCameraInfo;
    unsigned int mJitterIndex = 0;
    std::vector<osg::Vec2d> mJitterSamples;
    osg::Vec2d mJitter;
    osg::Vec2d mLastJitter;
    osg::ref_ptr<osg::Uniform> mJitterUniform;
    osg::Matrixf mLastView;
    osg::Matrixf mLastProjection;
    osg::Matrixf mLastViewProjection;
};

} // namespace Kelvor
