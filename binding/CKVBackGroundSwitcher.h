#pragma once

#include "environment/CKVBackGroundColor.h"
#include "environment/CKVBackGroundSkyBox.h"
#include "environment/CKVBackGroundWaterMask.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBackGroundConfig.h"

#include <osg/BufferIndexBinding>
#include <osg/Camera>
#include <osg/ref_ptr>

namespace osgViewer {
class View;
}

namespace Kelvor {

class CKVAtmosphereSky;
class CKVOSGCamera;
class CKVPostProcessNode;

// Keeps the background objects of a render context and shows the one a
// background configuration asks for. Objects are made on first use and kept:
// switching back to a background finds it built, its images loaded.
class CKVBackGroundSwitcher
{
public:
    CKVBackGroundSwitcher();
    ~CKVBackGroundSwitcher();

    // Where backgrounds go and what they draw with. `lightBinding` is the
    // LightInfo block's binding, which the sky box needs on its own state.
    void setTargets(CKVPostProcessNode* root, CKVOSGCamera* mainCamera, osg::UniformBufferBinding* lightBinding);
    // A background node goes in at this child's index of the root, before
    // it; without one, at the end.
    void setInsertBefore(osg::Node* child) { mInsertBefore = child; }
    // The sky of the atmosphere background; without one that background
    // shows the sky box with an empty sky.
    void setAtmosphere(CKVAtmosphereSky* atmosphere);

    // Stores a copy and shows the background of its type. False for an
    // unknown type or without a root and main camera.
    bool apply(CKVBackGroundConfig const& config);

    // Follows a new render size: the gradient's height, the water mask's
    // viewport and its camera.
    void resize(int width, int height);

    // Makes the one water mask background and its camera, a slave of `view`
    // on the main camera's window. True with no effect when it exists or the
    // file is missing; false without a root.
    bool waterMask(char const* path, unsigned int width, unsigned int height, osgViewer::View* view);

    // Releases the GL objects of every background held here, shown or not,
    // for the window about to close. A background swapped out of the graph
    // is not reached by the window's own release, and objects released after
    // the window is gone outlive it in OpenSceneGraph's per-context data
    // until process exit, where they crash.
    void releaseGLObjects(osg::State* state) const;

    CKVBackGroundConfig const& getBackGroundConfig() const { return mConfig; }
    CKVBackGroundColor* getColorBackGround() const { return mColor.get(); }
    CKVBackGroundSkyBox* getSkyBoxBackGround() const { return mSkyBox.get(); }
    CKVBackGround* getCurrentBackGround() const { return mCurrent.get(); }
    CKVBackGroundWaterMask* getWaterMaskBackGround() const { return mWaterMask.get(); }
    osg::Camera* getWaterMaskCamera() const { return mWaterMaskCamera.get(); }

private:
    void showGradient(osg::Vec3f const& top, osg::Vec3f const& bottom);
    void showSkyBox(CKVBackGroundConfig const& config, bool atmosphere);
    void makeCurrent(CKVBackGround* background);
    float viewportHeight() const;

    osg::ref_ptr<CKVPostProcessNode> mRoot;
    osg::ref_ptr<CKVOSGCamera> mMainCamera;
    osg::ref_ptr<osg::UniformBufferBinding> mLightBinding;
    osg::observer_ptr<osg::Node> mInsertBefore;
    osg::observer_ptr<CKVAtmosphereSky> mAtmosphere;
    CKVBackGroundConfig mConfig;
    kv_shared_ptr<CKVBackGroundColor> mColor;
    kv_shared_ptr<CKVBackGroundSkyBox> mSkyBox;
    kv_shared_ptr<CKVBackGround> mCurrent;
    osg::ref_ptr<osg::Camera> mWaterMaskCamera;
    kv_shared_ptr<CKVBackGroundWaterMask> mWaterMask;
};

} // namespace Kelvor
