#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <osg/Array>
#include <osg/Camera>
#include <osg/Group>
#include <osg/Uniform>
#include <osg/Vec3f>

#include <vector>

namespace osgUtil {
class CullVisitor;
}

namespace Kelvor {

class CKVOSGCamera;

// The root of everything the backend draws. When a full-screen effect is on
// it renders the scene into its own targets and feeds them through the effect
// chain; with every effect off it steps aside and the scene is culled as a
// plain group straight into the window. It also clamps the frame's near and
// far planes to what the scene really spans.
class CKVPostProcessNode : public osg::Camera
{
public:
    // `cameraInfo` is the CameraInfo block's array; `samples` the window's
    // multisample count, which the scene targets will share.
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

    // Follows the window; a zero size is ignored.
    void resize(int width, int height);

    // Unit vector towards the sun.
    void setLightPosition(osg::Vec3f const& position) { mLightPosition = position; }
    osg::Vec3f const& getLightPosition() const { return mLightPosition; }

    // True when at least one full-screen effect is on.
    bool isActive() const { return mActive; }

    // Parent of the background node that the GIS camera draws.
    osg::Group* getGISGroup() { return mGISGroup.get(); }
    osg::Uniform* getNearFarUniform() { return mNearFarUniform.get(); }
    CKVOSGCamera* getMainCamera() { return mMainCamera.get(); }
    osg::FloatArray* getCameraInfo() { return mCameraInfo.get(); }
    int getSamples() const { return mSamples; }

    void accept(osg::NodeVisitor& visitor) override;

protected:
    ~CKVPostProcessNode() override;

private:
    // Our OpenSceneGraph node behind a host node, or null when the host node
    // is not one of our scene nodes.
    static osg::Node* osgNodeOf(CKVSceneNode* node);

    void copyMainCameraSettings();
    void clampNearFar(osgUtil::CullVisitor& cullVisitor);

    osg::ref_ptr<CKVOSGCamera> mMainCamera;
    osg::ref_ptr<osg::FloatArray> mCameraInfo;
    osg::Vec3f mLightPosition;
    osg::ref_ptr<osg::Uniform> mNearFarUniform;
    bool mActive = false;
    std::vector<kv_shared_ptr<CKVSceneNode>> mSceneNodes;
    osg::ref_ptr<osg::Group> mGISGroup;
    // The window's multisample count, shared by the scene targets.
    int mSamples;
};

} // namespace Kelvor
