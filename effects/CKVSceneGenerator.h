#pragma once

#include "environment/CBGGroup.h"

#include <osg/Callback>
#include <osg/Camera>
#include <osg/Referenced>
#include <osg/StateSet>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

#include <vector>

namespace osgUtil {
class CullVisitor;
}

namespace Kelvor {

class CKVOSGTransformNode;
class CKVSceneNode;

// Base of the effects that render the scene (or a full-screen geode) into
// their own targets before the scene pass: depth pyramid, shadows, SSAO,
// light propagation. The generator is a child of the post-process node but
// its passes are not in the scene graph: in cull it pushes each pass's state
// set and lets the pass camera cull its subject through the effect's filter.
class CKVSceneGenerator : public CBGGroup
{
public:
    class PassData;

    // Installed on each pass camera. A "CBGGeode" subject simply traverses;
    // any other subject is walked as a group, child by child, through the
    // generator's filter.
    class CameraCullCallback : public osg::NodeCallback
    {
    public:
        // Raw back pointers: the generator owns the pass, the pass its
        // camera, the camera this callback.
        CameraCullCallback(CKVSceneGenerator& generator, PassData& pass);
        void operator()(osg::Node* node, osg::NodeVisitor* visitor) override;

    private:
        CKVSceneGenerator* mGenerator;
        PassData* mPass;
    };

    // One pass: a plain camera, the state set pushed around it, the subject
    // it draws, and the effect's variant state sets (instanced, terrain ...)
    // that the filter pushes per node. The subject is not owned: it is often
    // the root, which owns the generator; a subject of the generator's own
    // is kept by the generator.
    class PassData : public osg::Referenced
    {
    public:
        PassData(CKVSceneGenerator& generator, osg::Node* subject, unsigned int variantCount = 0);

        osg::Camera* getCamera() const { return mCamera.get(); }
        osg::StateSet* getStateSet() const { return mStateSet.get(); }
        osg::Node* getSubject() const { return mSubject.get(); }
        void setSubject(osg::Node* subject) { mSubject = subject; }
        unsigned int getNumVariants() const { return static_cast<unsigned int>(mVariants.size()); }
        // Null past the end.
        osg::StateSet* getVariant(unsigned int index) const;

    protected:
        ~PassData() override;

    private:
        osg::ref_ptr<osg::Camera> mCamera;
        osg::ref_ptr<osg::StateSet> mStateSet;
        osg::observer_ptr<osg::Node> mSubject;
        std::vector<osg::ref_ptr<osg::StateSet>> mVariants;
    };

    CKVSceneGenerator();

    char const* className() const override { return "CKVSceneGenerator"; }

    // Cull only, and only while the effect is on; the generator's own
    // children are never traversed.
    void traverse(osg::NodeVisitor& visitor) override;

    // Passes run in the order they were added.
    void addPass(PassData* pass);
    void removePass(PassData* pass);
    unsigned int getNumPasses() const { return static_cast<unsigned int>(mPasses.size()); }
    PassData* getPass(unsigned int index) const;

    // The effect's filter for one child of a pass subject. The default is
    // the common scene filter: only "CKVOSGTransformNode" nodes of a host
    // node take part; hidden nodes are skipped; acceptsSceneNode decides
    // the rest; variantFor may push a state set; then the usual frustum
    // test, the node's own state set and transform, and its children
    // ("CKVOSGGeometry" to the cull visitor, others through this filter).
    virtual void cullChild(osgUtil::CullVisitor& visitor, osg::Node& child, PassData& pass);

    // Reaches the pass cameras and their state sets, which are not children.
    // Subjects are left to their owners: the root releases itself.
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVSceneGenerator() override;

    virtual bool isEffectEnabled() const { return true; }
    // Per-frame work before the passes run (matrices, uniforms).
    virtual void updateFrame(osgUtil::CullVisitor& visitor) { (void)visitor; }
    // Whether a visible host node takes part in the pass (a render option,
    // a material property ...).
    virtual bool acceptsSceneNode(CKVSceneNode const& node, PassData const& pass) const;
    // The variant state set for the node, or null for none.
    virtual osg::StateSet* variantFor(CKVSceneNode const& node, PassData& pass) const;

private:
    void cullTransformNode(osgUtil::CullVisitor& visitor, CKVOSGTransformNode& node, PassData& pass);

    std::vector<osg::ref_ptr<PassData>> mPasses;
};

} // namespace Kelvor
