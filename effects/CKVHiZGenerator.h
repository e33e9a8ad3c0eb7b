#pragma once

#include "effects/CKVSceneGenerator.h"

#include <osg/Program>
#include <osg/Texture2D>
#include <osg/Uniform>
#include <osg/observer_ptr>

namespace Kelvor {

class HiZGeometry;

// Culls the instances of instanced geometry on the GPU, so that every later
// pass draws only what may be visible. Two passes before the others:
//
// - "HizDepthCamera" (pre-render 3) draws the opaque scene's depth into the
//   window with the depth-only programs, with last frame's surviving
//   instances; its post-draw step copies that depth into a texture and
//   builds the maximum-depth chain over it (HiZGeometry).
// - "OcclusionCamera" (pre-render 6) draws nothing: each instanced geometry
//   it reaches dispatches the culling program instead, which tests every
//   instance against the frustum, its size on the screen and the chain, and
//   compacts the survivors into the rows and count that the draws read. A
//   memory barrier follows.
//
// The switches live in CKVRenderStateManager: the pre-pass runs while
// isHiZ(), the culling pass while isOcclusionCulling(). Culling without the
// pre-pass runs the frustum and size tests alone, since there is no depth
// to test against; the pre-pass without culling only lays down depth.
// Transparent nodes take part in neither pass.
class CKVHiZGenerator : public CKVSceneGenerator
{
public:
    // Shared with the culling program's uniforms.
    static char const* const kScreenSizeUniform;
    static char const* const kHiZMapUniform;
    static char const* const kHiZTestUniform;

    // `camera` is the main camera, whose culling settings the passes copy;
    // `root` is what they draw. Neither is owned (the root owns the
    // generator).
    CKVHiZGenerator(osg::Camera* camera, osg::Group* root);

    char const* className() const override { return "CKVHiZGenerator"; }

    // The window size; a zero side is ignored.
    void resize(unsigned int width, unsigned int height);
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }

    // Cull only: the pre-pass while it is switched on, then the culling
    // pass while culling is.
    void traverse(osg::NodeVisitor& visitor) override;

    PassData* getDepthPass() const { return mDepthPass.get(); }
    PassData* getOcclusionPass() const { return mOcclusionPass.get(); }
    osg::Texture2D* getHiZTexture() const { return mHiZTexture.get(); }
    HiZGeometry* getHiZGeometry() const { return mHiZGeometry.get(); }

    // Transparent state: the transparent bin, or the depth-sorted bin by
    // name. Such nodes neither occlude nor are culled.
    static bool isTransparent(osg::StateSet const& stateSet);

    // Skips transparent nodes and nodes without a state set of their own.
    void cullChild(osgUtil::CullVisitor& visitor, osg::Node& child, PassData& pass) override;

    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVHiZGenerator() override;

    osg::StateSet* variantFor(CKVSceneNode const& node, PassData& pass) const override;

private:
    // The depth pass's variants, in the order variantFor picks them.
    enum Variant : unsigned int
    {
        kInstancedVariant = 0,
        kTerrainVariant = 1,
        kClipVariant = 2,
        kInstancedClipVariant = 3,
        kVariantCount = 4
    };

    void buildDepthPass();
    void buildOcclusionPass();
    // Viewport, culling and ordering shared by both pass cameras.
    void setUpPassCamera(osg::Camera& camera, char const* name, int order) const;
    void runPass(osgUtil::CullVisitor& visitor, PassData& pass);

    osg::observer_ptr<osg::Group> mRoot;
    osg::observer_ptr<osg::Camera> mCamera;
    unsigned int mWidth = 1;
    unsigned int mHeight = 1;
    osg::ref_ptr<PassData> mDepthPass;
    osg::ref_ptr<osg::Texture2D> mHiZTexture;
    osg::ref_ptr<HiZGeometry> mHiZGeometry;
    osg::ref_ptr<PassData> mOcclusionPass;
    osg::ref_ptr<osg::Uniform> mScreenSizeUniform;
    osg::ref_ptr<osg::Uniform> mHiZTestUniform;
    // The depth-only programs: plain, instanced, terrain, clipped, instanced
    // and clipped (terrain may be null). Kept here as well as in the pass
    // state sets so that their GL objects go with the context.
    osg::ref_ptr<osg::Program> mDepthPrograms[kVariantCount + 1];
    osg::ref_ptr<osg::Program> mCullingProgram;
};

} // namespace Kelvor
