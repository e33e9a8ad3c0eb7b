#pragma once

#include "binding/KVBackendExport.h"
#include "scene/CKVOSGTransformNode.h"

#include "TarnwickRender/CKVSceneNode.h"

#include <osg/ref_ptr>

namespace osg {
class Node;
class Uniform;
} // namespace osg

namespace Kelvor {

// The backend's scene node: every host scene node is backed by exactly one
// CKVOSGTransformNode, and each list change the host makes is mirrored on
// it. Copies share the transform node of the original.
class KV_BACKEND_EXPORT CKVSceneNodeImp : public CKVSceneNode
{
    KV_DECLARE_RUNTIME_CLASS(CKVSceneNodeImp)
public:
    CKVSceneNodeImp();
    CKVSceneNodeImp(CKVSceneNodeImp const& other);
    CKVSceneNodeImp& operator=(CKVSceneNodeImp const& other);
    ~CKVSceneNodeImp() override;

    CKVOSGTransformNode* getOSGNode() { return mTransformNode.get(); }
    CKVOSGTransformNode const* getOSGNode() const { return mTransformNode.get(); }

protected:
    // False for null, a foreign node class, or a missing transform node.
    bool insertChildNodeImp(CKVSceneNode* child) override;
    // As insertion, except that a child without a transform node is simply
    // not there to remove: true.
    bool removeChildNodeImp(CKVSceneNode* child) override;
    // The point where a buffer geometry's host buffers first become arrays.
    bool insertRenderObjectImp(CKVRenderObject* object) override;
    bool removeRenderObjectImp(CKVRenderObject* object) override;
    bool addUniformImp(CKVUniform* uniform) override;
    bool removeUniformImp(CKVUniform* uniform) override;

private:
    // Buffer geometry, text or a nested node group; null for anything else.
    osg::Node* getRenderObjectOSGNode(CKVRenderObject* object) const;
    static osg::Uniform* getUniformOSGObject(CKVUniform* uniform);

    osg::ref_ptr<CKVOSGTransformNode> mTransformNode;
};

// The creation function of the class record, for creation by name.
CKVObject* createCKVSceneNodeImpObject();

// The scene-node factory registered with CKVRenderCallback.
CKVSceneNode* createSceneNodeImp();

} // namespace Kelvor
