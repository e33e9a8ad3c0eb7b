#pragma once

#include "environment/CBGGeometry.h"

#include <osg/Program>
#include <osg/TextureCubeMap>
#include <osg/Uniform>
#include <osg/ref_ptr>

namespace Kelvor {

// The sky cube drawn into the environment cube map in one layered draw,
// followed, once physically based materials exist, by the two convolutions
// that turn it into image-based light: a 32-texel irradiance map and a
// 64-texel prefiltered map of five roughness levels. The convolutions cost
// far more than the sky, so they run on every second frame only, and never
// while no material needs them; until then their maps have no storage and
// read black.
class IBLGeometry : public CBGGeometry
{
public:
    static constexpr int kIrradianceSize = 32;
    static constexpr int kPrefilterSize = 64;
    static constexpr int kPrefilterLevels = 5;

    IBLGeometry(osg::TextureCubeMap* environment, osg::TextureCubeMap* irradiance, osg::TextureCubeMap* prefilter);

    char const* className() const override { return "IBLGeometry"; }

    // The eight corners of the unit cube and its twelve triangles.
    static osg::ref_ptr<osg::Vec3Array> createCubeCorners();
    static osg::ref_ptr<osg::DrawElementsUShort> createCubeTriangles();

    // One frame of the convolution schedule: true when the convolutions run
    // now. `frameCounter` is advanced as the draw advances it, so that with
    // `physical` on the runs fall on every second frame, the first one on
    // the frame after the flag is first seen (or on that frame, when the
    // counter is still at its start).
    static bool advanceSchedule(int& frameCounter, bool physical);

    void drawImplementation(osg::RenderInfo& renderInfo) const override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    osg::Uniform* getViewProjection() const { return mViewProjection.get(); }
    int getFrameCounter() const { return mFrameCounter; }
    // Frames whose draw ran, and those that also convolved.
    unsigned int getSkyDrawCount() const { return mSkyDraws; }
    unsigned int getConvolutionCount() const { return mConvolutions; }

protected:
    ~IBLGeometry() override;

private:
    void initialize(osg::State& state) const;
    void attachLayered(osg::State& state, osg::TextureCubeMap& map, unsigned int level) const;
    void drawCube(osg::RenderInfo& renderInfo) const;
    void runIrradiance(osg::RenderInfo& renderInfo) const;
    void runPrefilter(osg::RenderInfo& renderInfo) const;
    void useProgram(osg::State& state, osg::Program& program) const;
    void setMatrices(osg::State& state, osg::Program& program) const;

    mutable bool mInitialized = false;
    mutable int mFrameCounter = 0;
    mutable unsigned int mFramebuffer = 0;
    mutable unsigned int mFramebufferContext = 0;
    osg::ref_ptr<osg::Uniform> mViewProjection;
    mutable osg::ref_ptr<osg::Program> mIrradianceProgram;
    mutable osg::ref_ptr<osg::Program> mPrefilterProgram;
    osg::ref_ptr<osg::TextureCubeMap> mEnvironment;
    osg::ref_ptr<osg::TextureCubeMap> mIrradiance;
    osg::ref_ptr<osg::TextureCubeMap> mPrefilter;
    mutable bool mPrefilterAllocated = false;
    mutable unsigned int mSkyDraws = 0;
    mutable unsigned int mConvolutions = 0;
};

} // namespace Kelvor
