#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVBaseNode.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderObject.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"
#include "TarnwickRender/CKVUniform.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace Kelvor {

// A node of the host's scene tree: child nodes, render objects, uniforms,
// typed states and a program parameter. The host keeps the lists; each
// change goes first to the backend through the ...Imp operations, and the
// lists change only when the backend accepted it. Changes of the program
// parameter and of states only raise update flags, which the backend reads
// and clears when it applies them.
class CKVSceneNode : public CKVBaseNode
{
    KV_DECLARE_RUNTIME_CLASS(CKVSceneNode)
public:
    enum UpdateMode : unsigned int { kProgramParamChanged = 1, kStatesChanged = 2 };

    ~CKVSceneNode() override;

    // False for null, this node, a node that is already a child, or one that
    // holds this node below it (which would make a cycle).
    bool addChildNode(CKVSceneNode* child);
    bool removeChildNode(CKVSceneNode* child);
    // Removes every child the backend lets go; true when all went.
    bool removeAllChildNode();
    unsigned int getNumChildNode() const { return static_cast<unsigned int>(mChildren.size()); }
    CKVSceneNode* getChildNode(unsigned int index) const;
    bool hasChildNode(CKVSceneNode const* child) const;

    // False for null or an object already held.
    bool addRenderObject(CKVRenderObject* object);
    bool removeRenderObject(CKVRenderObject* object);
    bool removeAllRenderObject();
    unsigned int getNumRenderObject() const { return static_cast<unsigned int>(mRenderObjects.size()); }
    CKVRenderObject* getRenderObject(unsigned int index) const;

    bool addUniform(CKVUniform* uniform);
    bool removeUniform(CKVUniform* uniform);
    unsigned int getNumUniform() const { return static_cast<unsigned int>(mUniforms.size()); }
    CKVUniform* getUniform(unsigned int index) const;

    CKVSceneNodeStateSet* getStateSet() { return &mStateSet; }
    CKVSceneNodeStateSet const* getStateSet() const { return &mStateSet; }

    CKVProgramParam getProgramParam() const;
    void setProgramParam(CKVProgramParam const& param);

    // The extent of the render objects and of the children, each child's
    // box taken through its transform, then through this node's own
    // transform: the box in the frame of this node's parent.
    CKVBndBox computeBoundingBox() const;

    bool getUpdateMode(UpdateMode mode) const;
    void addUpdateMode(UpdateMode mode);
    void removeUpdateMode(UpdateMode mode);

    // Copies name, program parameter and (cloned) states and raises both
    // update flags. Children, render objects and uniforms stay: they reach
    // the backend only through the add and remove operations.
    CKVSceneNode& operator=(CKVSceneNode const& other);

protected:
    CKVSceneNode();
    // As operator=: the copy starts without children, render objects and uniforms.
    CKVSceneNode(CKVSceneNode const& other);

    // The backend's side of each list change; false refuses it. The base
    // accepts everything, which suits a node without a backend.
    virtual bool insertChildNodeImp(CKVSceneNode* child);
    virtual bool removeChildNodeImp(CKVSceneNode* child);
    virtual bool insertRenderObjectImp(CKVRenderObject* object);
    virtual bool removeRenderObjectImp(CKVRenderObject* object);
    virtual bool addUniformImp(CKVUniform* uniform);
    virtual bool removeUniformImp(CKVUniform* uniform);

private:
    bool holdsBelow(CKVSceneNode const* node) const;

    std::vector<kv_shared_ptr<CKVSceneNode>> mChildren;
    std::vector<kv_shared_ptr<CKVRenderObject>> mRenderObjects;
    std::vector<kv_shared_ptr<CKVUniform>> mUniforms;
    CKVSceneNodeStateSet mStateSet;
    // The parameter may be set on a host thread while the render thread reads it.
    mutable std::mutex mParamMutex;
    CKVProgramParam mProgramParam;
    std::atomic<unsigned int> mUpdateMode{0};
};

} // namespace Kelvor
