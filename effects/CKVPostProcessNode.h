#pragma once

#include "effects/CKVFrameHistory.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <osg/Array>
#include <osg/Camera>
#include <osg/Group>
#include <osg/Program>
#include <osg/Texture2D>
#include <osg/Uniform>
#include <osg/Vec3f>
#include <osg/Vec4f>

#include <memory>
#include <string>
#include <vector>

namespace osgUtil {
class CullVisitor;
}

namespace Kelvor {

class CBGGeode;
class CKVAtmosphericScatttering;
class CKVDOFGenerator;
class CKVDrawBufferSelect;
class CKVFinalPass;
class CKVFullScreenGenerator;
class CKVGISCamera;
class CKVHiZGenerator;
class CKVOSGCamera;
class CKVSceneRenderTargets;
class CKVShadowGenerator;
class CKVSSAOGenerator;
class CKVSilhouetteGenerator;

// The root of everything the backend draws. When a full-screen effect is on
// it renders the scene into its own targets (a pre-render pass), hands them
// through the effect chain and shows the result with a full-screen triangle
// in the main camera; with every effect off it steps aside and the scene is
// culled as a plain group straight into the window. It also clamps the
// frame's near and far planes to what the scene really spans, keeps last
// frame's matrices, and finds the sun on the screen.
class CKVPostProcessNode : public osg::Camera
{
public:
    // `cameraInfo` is the CameraInfo block's array; `samples` the window's
    // multisample count, which the scene targets share.
    CKVPostProcessNode(CKVOSGCamera* mainCamera, osg::FloatArray* cameraInfo, int samples);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVPostProcessNode"; }
    bool isSameKindAs(osg::Object const* object) const override;

    // A host scene node enters the scene graph here. False for null and for a
    // node without an OpenSceneGraph node of ours; true with no change for a
    // node already attached.
    bool addSceneNode(CKVSceneNode* node);
    // False for null and for a node that is not attached.
    bool removeSceneNode(CKVSceneNode* node);
    unsigned int getNumSceneNodes() const { return static_cast<unsigned int>(mSceneNodes.size()); }

    // Effect switches. Each acts only on a change: it sets or removes its
    // define on this node's state set, has the shaders that write an extra
    // output for it recompiled, rebuilds the final program and relinks.
    void setColorGradingEnabled(bool enabled);
    void setDOFEnabled(bool enabled);
    void setVolumetricLightEnabled(bool enabled);
    void setSilhouetteEnabled(bool enabled);
    // Needs jitter samples first (setJitterSamples) for the jitter to move.
    void setTAAEnabled(bool enabled);
    bool getColorGradingEnabled() const { return mColorGradingEnabled; }
    bool getDOFEnabled() const { return mDOFEnabled; }
    bool getVolumetricLightEnabled() const { return mVolumetricLightEnabled; }
    bool getSilhouetteEnabled() const { return mSilhouetteEnabled; }
    bool getTAAEnabled() const { return mTAAEnabled; }
    // True when at least one full-screen effect is on.
    bool isActive() const { return mActive; }

    // Render styles 0 to 3: edges off; edges; edges on a white model; edges
    // only.
    void applyRenderStyle(int style);

    // Settings of the depth of field and the edges; they reach the effects
    // made by this node, not ones set in their place.
    void setDOFNearEnd(float value);
    void setDOFFarBegin(float value);
    void setDOFBlurSize(float value);
    void setEdgeColor(osg::Vec4f const& color);
    void setEdgeOnlyBackgroundColor(osg::Vec3f const& color);
    void setEdgeOnly(bool edgeOnly);

    // Reads a grading table image into the table. False, with the old table
    // kept, before grading was first switched on or when the image cannot
    // be read.
    bool setColorGrading(std::string const& imagePath);

    // The full-screen effects in chain order. A generator joins here when it
    // is made; the chain is relinked at once.
    void setSilhouetteGenerator(CKVFullScreenGenerator* generator);
    void setTAAGenerator(CKVFullScreenGenerator* generator);
    void setVolumetricLightGenerator(CKVFullScreenGenerator* generator);
    void setDOFGenerator(CKVFullScreenGenerator* generator);
    CKVFullScreenGenerator* getSilhouetteGenerator() const { return mSilhouetteGenerator.get(); }
    CKVFullScreenGenerator* getTAAGenerator() const { return mTAAGenerator.get(); }
    CKVFullScreenGenerator* getVolumetricLightGenerator() const { return mVolumetricLightGenerator.get(); }
    CKVFullScreenGenerator* getDOFGenerator() const { return mDOFGenerator.get(); }

    // The shadow generator, a child of this node: its passes run before the
    // scene pass whether or not a full-screen effect is on. Replaces any
    // earlier one.
    void setShadowGenerator(CKVShadowGenerator* generator);
    CKVShadowGenerator* getShadowGenerator() const { return mShadow.get(); }
    // The ambient occlusion generator, a child of this node right after the
    // shadow generator. Replaces any earlier one.
    void setSSAOGenerator(CKVSSAOGenerator* generator);
    CKVSSAOGenerator* getSSAOGenerator() const { return mSSAO.get(); }

    // The instance culling generator, a child of this node placed before
    // the shadow generator: its passes run before the scene pass whether or
    // not a full-screen effect is on. Replaces any earlier one.
    void setHiZGenerator(CKVHiZGenerator* generator);
    CKVHiZGenerator* getHiZGenerator() const { return mHiZ.get(); }

    // The context's atmosphere, held here so that whatever samples its sky
    // (the water and terrain materials) finds it through the root. The
    // context adds it as a child itself.
    void setAtmosphere(CKVAtmosphericScatttering* atmosphere);
    CKVAtmosphericScatttering* getAtmosphere() const { return mAtmosphere.get(); }

    // Points each effect at its input and the final pass at the last result.
    void relinkChain();
    // Writes this node's defines that the final pass listens to into its
    // source, when they changed (for instance the shadow define).
    void rebuildProgram();

    // Follows the window: the effects, then viewport and targets. A zero
    // size is ignored.
    void resize(int width, int height);

    // Unit vector towards the sun.
    void setLightPosition(osg::Vec3f const& position) { mLightPosition = position; }
    osg::Vec3f const& getLightPosition() const { return mLightPosition; }
    // Sub-pixel offsets in pixels for anti-aliasing.
    void setJitterSamples(std::vector<osg::Vec2d> const& samples) { mHistory.setJitterSamples(samples); }
    CKVFrameHistory const& getFrameHistory() const { return mHistory; }

    osg::Texture2D* getColorTexture() const;
    osg::Texture2D* getVelocityTexture() const;
    osg::Texture2D* getSilhouetteTexture() const;
    osg::Texture2D* getVolumetricLightTexture() const;
    osg::Texture2D* getDepthTexture() const;
    // Where the last frame's scene depth lies: the depth target while the
    // scene is drawn into the targets, null while it goes straight to the
    // window (whose depth buffer then holds it).
    osg::Texture2D* getSceneDepthTexture() const { return mActive ? getDepthTexture() : nullptr; }
    CBGGeode* getQuad() const;
    osg::Program* getProgram() const;
    std::string const& getDefinesText() const;
    bool isLUTCreated() const;
    osg::Texture2D* getLUTTexture() const;

    // Parent of the background node that the GIS camera draws.
    osg::Group* getGISGroup() { return mGISGroup.get(); }
    // The camera that draws the GIS group behind the scene. The render
    // context adds it as a child of this node; the group moves under it.
    void setGISCamera(CKVGISCamera* camera);
    CKVGISCamera* getGISCamera() const { return mGISCamera.get(); }
    osg::Uniform* getNearFarUniform() { return mNearFarUniform.get(); }
    osg::Uniform* getLightPositionScreenUniform() { return mLightPositionScreenUniform.get(); }
    CKVOSGCamera* getMainCamera() { return mMainCamera.get(); }
    osg::FloatArray* getCameraInfo() { return mCameraInfo.get(); }
    int getSamples() const { return mSamples; }

    void accept(osg::NodeVisitor& visitor) override;
    void traverse(osg::NodeVisitor& visitor) override;
    // Also reaches what is not among the children: the effects, the final
    // triangle, the targets.
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVPostProcessNode() override;

private:
    // Our OpenSceneGraph node behind a host node, or null when the host node
    // is not one of our scene nodes.
    static osg::Node* osgNodeOf(CKVSceneNode* node);

    void copyMainCameraSettings();
    void clampNearFar(osgUtil::CullVisitor& cullVisitor);
    void updateSunOnScreen();
    // Sets or removes the define, tells the program manager when shaders
    // write an output for it, then rebuilds and relinks.
    void switchEffect(bool& flag, bool enabled, char const* define, bool recompileSurfaces);
    void setGenerator(osg::ref_ptr<CKVFullScreenGenerator>& slot, CKVFullScreenGenerator* generator);
    // The edge and depth-of-field effects in their slots, or null when
    // another effect was set there.
    CKVSilhouetteGenerator* silhouette() const;
    CKVDOFGenerator* depthOfField() const;

    osg::ref_ptr<CKVOSGCamera> mMainCamera;
    osg::ref_ptr<osg::FloatArray> mCameraInfo;
    osg::Vec3f mLightPosition;
    osg::ref_ptr<osg::Uniform> mNearFarUniform;
    std::unique_ptr<CKVSceneRenderTargets> mTargets;
    std::unique_ptr<CKVFinalPass> mFinalPass;
    osg::ref_ptr<CBGGeode> mDrawBufferGeode;
    osg::ref_ptr<CKVDrawBufferSelect> mDrawBufferSelect;
    bool mActive = false;
    bool mTAAEnabled = false;
    osg::ref_ptr<CKVFullScreenGenerator> mTAAGenerator;
    CKVFrameHistory mHistory;
    bool mSilhouetteEnabled = false;
    osg::ref_ptr<CKVFullScreenGenerator> mSilhouetteGenerator;
    bool mVolumetricLightEnabled = false;
    osg::ref_ptr<osg::Uniform> mLightPositionScreenUniform;
    osg::ref_ptr<CKVFullScreenGenerator> mVolumetricLightGenerator;
    bool mDOFEnabled = false;
    osg::ref_ptr<CKVFullScreenGenerator> mDOFGenerator;
    bool mColorGradingEnabled = false;
    osg::ref_ptr<CKVShadowGenerator> mShadow;
    osg::ref_ptr<CKVSSAOGenerator> mSSAO;
    osg::ref_ptr<CKVHiZGenerator> mHiZ;
    osg::ref_ptr<CKVAtmosphericScatttering> mAtmosphere;
    std::vector<kv_shared_ptr<CKVSceneNode>> mSceneNodes;
    osg::ref_ptr<osg::Group> mGISGroup;
    osg::ref_ptr<CKVGISCamera> mGISCamera;
    // The window's multisample count, shared by the scene targets.
    int mSamples;
};

} // namespace Kelvor
