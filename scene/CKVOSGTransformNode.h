#pragma once

#include "binding/KVBackendExport.h"

#include "TarnwickRender/CKVVisibilityState.h"

#include <osg/AutoTransform>
#include <osg/Image>

namespace osg {
class StateSet;
class Texture;
} // namespace osg

namespace osgUtil {
class CullVisitor;
class IntersectionVisitor;
class UpdateVisitor;
} // namespace osgUtil

namespace Kelvor {

class CKVBasicMaterial;
class CKVLineMaterial;
class CKVMaterialState;
class CKVPhysicalMaterial;
class CKVPhysicalWaterMaterial;
class CKVSceneNode;
class CKVTerrainMaterial;
class CKVTransformState;
class CKVWaterMaterial;

// The OpenSceneGraph node behind one host scene node. It reads the host
// node's states lazily during OpenSceneGraph's own traversals: host changes
// only raise flags, which the update traversal applies once; visibility,
// selectability and distance ranges are read live in cull and intersection;
// the matrix comes from the host's transform state whenever it is asked for.
//
// The back pointer owns nothing: the host node owns this node, and a parent
// group may keep it alive longer, so the host removes a node from its parent
// before the node dies. Copies have no host node and behave as a plain group.
class KV_BACKEND_EXPORT CKVOSGTransformNode : public osg::AutoTransform
{
public:
    static char const* const s_className;

    explicit CKVOSGTransformNode(CKVSceneNode* sceneNode = nullptr);
    CKVOSGTransformNode(CKVOSGTransformNode const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override;
    osg::Object* clone(osg::CopyOp const& copyop) const override;
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override;
    char const* className() const override;

    void accept(osg::NodeVisitor& visitor) override;
    void traverse(osg::NodeVisitor& visitor) override;

    // An auto-transformed node reports the matrix it computed back to the
    // host here, so the host can read where an auto-scaled node really is.
    bool computeLocalToWorldMatrix(osg::Matrixd& matrix, osg::NodeVisitor* visitor) const override;
    // No write-back here: only the forward matrix is what the host reads.
    bool computeWorldToLocalMatrix(osg::Matrixd& matrix, osg::NodeVisitor* visitor) const override;

    CKVSceneNode* tryGetSceneNode() { return mSceneNode; }
    CKVSceneNode const* tryGetSceneNode() const { return mSceneNode; }

protected:
    ~CKVOSGTransformNode() override;

    void updateTraverse(osgUtil::UpdateVisitor& visitor);
    void cullTraverse(osgUtil::CullVisitor& visitor);
    void intersectionTraverse(osgUtil::IntersectionVisitor& visitor);

    // Applies a dirty material on top of what the state set holds; a state
    // without a material is left dirty for a later material.
    void updateMaterial(CKVMaterialState* state, osgUtil::UpdateVisitor& visitor);
    // A null state places nothing: no auto scale, no rotation.
    void updateTransform(CKVTransformState* state);
    // Traverses the children that the node's distance range lets through.
    void culling(CKVSceneNode const* node, osg::NodeVisitor& visitor);
    bool isVisible(CKVSceneNode const* node, CKVVisibilityState::Mode mode) const;

    // The material functions. `mask` collects the texture mask bits of the
    // basic and physical parts of one material.
    void applyBasicMaterial(CKVBasicMaterial const* material, osg::StateSet* stateSet, unsigned& mask);
    void applyLineMaterial(CKVLineMaterial const* material, osg::StateSet* stateSet);
    void applyPhycisalMaterial(CKVPhysicalMaterial const* material, osg::StateSet* stateSet, unsigned& mask);
    void applyPhysicalWaterMaterial(CKVPhysicalWaterMaterial const* material, osg::StateSet* stateSet,
                                    osgUtil::UpdateVisitor& visitor);
    void applyTerrainMaterial(CKVTerrainMaterial const* material, osg::StateSet* stateSet,
                              osgUtil::UpdateVisitor& visitor);
    void applyWaterMaterial(CKVWaterMaterial const* material, osg::StateSet* stateSet,
                            osgUtil::UpdateVisitor& visitor);
    osg::ref_ptr<osg::Image> getErrorFormatImage() const;
    osg::ref_ptr<osg::Image> getErrorPathImage() const;
    osg::ref_ptr<osg::Image> getResourceImage(char const* relativePath) const;
    void setTextureFilter(osg::Texture* texture);
    void makeRenderBinDetails(osg::StateSet* stateSet, CKVBasicMaterial const* material);

private:
    // The local matrix of the host's transform, or false when the node has
    // no host node or no transform state (the matrix is then left alone).
    bool computeLocalMatrix(osg::Matrixd& local, osg::NodeVisitor* visitor, bool writeBack) const;

    CKVSceneNode* mSceneNode;
};

} // namespace Kelvor
