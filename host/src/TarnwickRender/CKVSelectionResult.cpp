#include "TarnwickRender/CKVSelectionResult.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVSelectionResult, CKVSharedObject)

CKVSelectionResult::CKVSelectionResult() : mInstanceIndex(kNoInstance)
{
}

CKVSelectionResult::CKVSelectionResult(CKVSelectionResult const& other)
    : CKVSharedObject(other),
      mDrawable(other.mDrawable),
      mPosition(other.mPosition),
      mInstanceIndex(other.mInstanceIndex),
      mSceneNode(other.mSceneNode)
{
}

CKVSelectionResult& CKVSelectionResult::operator=(CKVSelectionResult const& other)
{
    mDrawable = other.mDrawable;
    mPosition = other.mPosition;
    mInstanceIndex = other.mInstanceIndex;
    mSceneNode = other.mSceneNode;
    return *this;
}

CKVSelectionResult::~CKVSelectionResult() = default;

CKVDrawable const* CKVSelectionResult::getDrawable() const
{
    return mDrawable.get();
}

void CKVSelectionResult::setDrawable(CKVDrawable const* drawable)
{
    mDrawable = drawable;
}

CKVSceneNode const* CKVSelectionResult::getSceneNode() const
{
    return mSceneNode.get();
}

void CKVSelectionResult::setSceneNode(CKVSceneNode const* node)
{
    mSceneNode = node;
}

bool CKVSelectionResult::valid() const
{
    return mDrawable.valid();
}

} // namespace Kelvor
