#include "TarnwickRender/CKVSceneNode.h"

#include "TarnwickRender/CKVGroupObject.h"
#include "TarnwickRender/CKVTransformState.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVSceneNode, CKVBaseNode)

namespace {

template <class T>
typename std::vector<kv_shared_ptr<T>>::iterator findIn(std::vector<kv_shared_ptr<T>>& list, T const* item)
{
    return std::find_if(list.begin(), list.end(), [item](kv_shared_ptr<T> const& p) { return p.get() == item; });
}

// The node that a group object stands for, or null for other render objects.
CKVSceneNode* groupNodeOf(CKVRenderObject const* object)
{
    if (!object || !object->isKindOf(CKVGroupObject::desc()))
        return nullptr;
    return static_cast<CKVGroupObject const*>(object)->getNodeObject();
}

} // namespace

CKVSceneNode::CKVSceneNode() : mStateSet(this)
{
}

CKVSceneNode::CKVSceneNode(CKVSceneNode const& other) : CKVBaseNode(other), mStateSet(this)
{
    mStateSet.copyFrom(other.mStateSet);
    mProgramParam = other.getProgramParam();
    mUpdateMode.store(kProgramParamChanged | kStatesChanged, std::memory_order_release);
}

CKVSceneNode& CKVSceneNode::operator=(CKVSceneNode const& other)
{
    if (&other == this)
        return *this;
    CKVBaseNode::operator=(other);
    mStateSet.copyFrom(other.mStateSet);
    setProgramParam(other.getProgramParam());
    addUpdateMode(kStatesChanged);
    return *this;
}

CKVSceneNode::~CKVSceneNode() = default;

bool CKVSceneNode::holdsBelow(CKVSceneNode const* node) const
{
    for (kv_shared_ptr<CKVSceneNode> const& child : mChildren) {
        if (child.get() == node || child->holdsBelow(node))
            return true;
    }
    for (kv_shared_ptr<CKVRenderObject> const& object : mRenderObjects) {
        CKVSceneNode const* grouped = groupNodeOf(object.get());
        if (grouped && (grouped == node || grouped->holdsBelow(node)))
            return true;
    }
    return false;
}

bool CKVSceneNode::addChildNode(CKVSceneNode* child)
{
    if (!child || child == this || hasChildNode(child) || child->holdsBelow(this))
        return false;
    if (!insertChildNodeImp(child))
        return false;
    mChildren.emplace_back(child);
    return true;
}

bool CKVSceneNode::removeChildNode(CKVSceneNode* child)
{
    auto it = findIn(mChildren, child);
    if (!child || it == mChildren.end())
        return false;
    if (!removeChildNodeImp(child))
        return false;
    mChildren.erase(it);
    return true;
}

bool CKVSceneNode::removeAllChildNode()
{
    // Children the backend refuses to let go stay, in their order.
    std::vector<kv_shared_ptr<CKVSceneNode>> kept;
    for (kv_shared_ptr<CKVSceneNode>& child : mChildren) {
        if (!removeChildNodeImp(child.get()))
            kept.push_back(child);
    }
    bool const all = kept.empty();
    mChildren.swap(kept);
    return all;
}

CKVSceneNode* CKVSceneNode::getChildNode(unsigned int index) const
{
    return index < mChildren.size() ? mChildren[index].get() : nullptr;
}

bool CKVSceneNode::hasChildNode(CKVSceneNode const* child) const
{
    return std::any_of(mChildren.begin(), mChildren.end(),
                       [child](kv_shared_ptr<CKVSceneNode> const& p) { return p.get() == child; });
}

bool CKVSceneNode::addRenderObject(CKVRenderObject* object)
{
    if (!object || findIn(mRenderObjects, object) != mRenderObjects.end())
        return false;
    CKVSceneNode const* grouped = groupNodeOf(object);
    if (grouped && (grouped == this || grouped->holdsBelow(this)))
        return false;
    if (!insertRenderObjectImp(object))
        return false;
    mRenderObjects.emplace_back(object);
    return true;
}

bool CKVSceneNode::removeRenderObject(CKVRenderObject* object)
{
    auto it = findIn(mRenderObjects, object);
    if (!object || it == mRenderObjects.end())
        return false;
    if (!removeRenderObjectImp(object))
        return false;
    mRenderObjects.erase(it);
    return true;
}

bool CKVSceneNode::removeAllRenderObject()
{
    std::vector<kv_shared_ptr<CKVRenderObject>> kept;
    for (kv_shared_ptr<CKVRenderObject>& object : mRenderObjects) {
        if (!removeRenderObjectImp(object.get()))
            kept.push_back(object);
    }
    bool const all = kept.empty();
    mRenderObjects.swap(kept);
    return all;
}

CKVRenderObject* CKVSceneNode::getRenderObject(unsigned int index) const
{
    return index < mRenderObjects.size() ? mRenderObjects[index].get() : nullptr;
}

bool CKVSceneNode::addUniform(CKVUniform* uniform)
{
    if (!uniform || findIn(mUniforms, uniform) != mUniforms.end())
        return false;
    if (!addUniformImp(uniform))
        return false;
    mUniforms.emplace_back(uniform);
    return true;
}

bool CKVSceneNode::removeUniform(CKVUniform* uniform)
{
    auto it = findIn(mUniforms, uniform);
    if (!uniform || it == mUniforms.end())
        return false;
    if (!removeUniformImp(uniform))
        return false;
    mUniforms.erase(it);
    return true;
}

CKVUniform* CKVSceneNode::getUniform(unsigned int index) const
{
    return index < mUniforms.size() ? mUniforms[index].get() : nullptr;
}

CKVProgramParam CKVSceneNode::getProgramParam() const
{
    std::lock_guard<std::mutex> lock(mParamMutex);
    return mProgramParam;
}

void CKVSceneNode::setProgramParam(CKVProgramParam const& param)
{
    {
        std::lock_guard<std::mutex> lock(mParamMutex);
        mProgramParam = param;
    }
    // Raised after the value is in place, so a reader that sees the flag
    // also sees the new parameter.
    addUpdateMode(kProgramParamChanged);
}

CKVBndBox CKVSceneNode::computeBoundingBox() const
{
    CKVBndBox box;
    for (kv_shared_ptr<CKVRenderObject> const& object : mRenderObjects)
        box.addBndBox(object->computeBoundingBox());
    for (kv_shared_ptr<CKVSceneNode> const& child : mChildren)
        box.addBndBox(child->computeBoundingBox());

    CKVSceneNodeState const* state = mStateSet.getState(CKVSceneNodeState::kTransform);
    if (state && box.valid()) {
        CKVTransformState const* transform = static_cast<CKVTransformState const*>(state);
        // An automatic transform's matrix is the one the backend last
        // computed; before the first frame it is the identity.
        if (transform->getTransformMode() != CKVTransformState::kNone)
            box.transformBy(transform->getMatrix());
    }
    return box;
}

bool CKVSceneNode::getUpdateMode(UpdateMode mode) const
{
    return (mUpdateMode.load(std::memory_order_acquire) & mode) != 0u;
}

void CKVSceneNode::addUpdateMode(UpdateMode mode)
{
    mUpdateMode.fetch_or(mode, std::memory_order_acq_rel);
}

void CKVSceneNode::removeUpdateMode(UpdateMode mode)
{
    mUpdateMode.fetch_and(~static_cast<unsigned int>(mode), std::memory_order_acq_rel);
}

bool CKVSceneNode::insertChildNodeImp(CKVSceneNode*)
{
    return true;
}

bool CKVSceneNode::removeChildNodeImp(CKVSceneNode*)
{
    return true;
}

bool CKVSceneNode::insertRenderObjectImp(CKVRenderObject*)
{
    return true;
}

bool CKVSceneNode::removeRenderObjectImp(CKVRenderObject*)
{
    return true;
}

bool CKVSceneNode::addUniformImp(CKVUniform*)
{
    return true;
}

bool CKVSceneNode::removeUniformImp(CKVUniform*)
{
    return true;
}

} // namespace Kelvor
