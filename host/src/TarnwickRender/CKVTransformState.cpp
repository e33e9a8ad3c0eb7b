#include "TarnwickRender/CKVTransformState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVTransformState, CKVSceneNodeState)

CKVTransformState::CKVTransformState()
    : mMode(kNone),
      mAutoScale(false),
      mRotationMode(kNoRotation),
      mRotationAxis(CKVVector3D::kZAxis),
      mRotationNormal(CKVVector3D::kYAxis)
{
}

CKVTransformState::CKVTransformState(CKVTransformState const& other)
    : CKVSceneNodeState(other),
      mMode(other.mMode),
      mMatrix(other.getMatrix()),
      mBasePosition(other.mBasePosition),
      mAutoScale(other.mAutoScale),
      mRotationMode(other.mRotationMode),
      mRotationAxis(other.mRotationAxis),
      mRotationNormal(other.mRotationNormal)
{
}

CKVTransformState::~CKVTransformState() = default;

void CKVTransformState::setTransformMode(Mode mode)
{
    mMode = mode;
    dirty(true);
}

CKVMatrix3D CKVTransformState::getMatrix() const
{
    std::lock_guard<std::mutex> lock(mMatrixMutex);
    return mMatrix;
}

void CKVTransformState::setMatrix(CKVMatrix3D const& matrix)
{
    {
        std::lock_guard<std::mutex> lock(mMatrixMutex);
        mMatrix = matrix;
    }
    if (mMode != kAutoTransform)
        dirty(true);
}

void CKVTransformState::setBasePosition(CKVPoint3D const& position)
{
    mBasePosition = position;
    dirty(true);
}

void CKVTransformState::setAutoScale(bool autoScale)
{
    mAutoScale = autoScale;
    dirty(true);
}

void CKVTransformState::setRotationMode(RotationMode mode)
{
    mRotationMode = mode;
    dirty(true);
}

void CKVTransformState::getRotationAxis(CKVVector3D& axis, CKVVector3D& normal) const
{
    axis = mRotationAxis;
    normal = mRotationNormal;
}

void CKVTransformState::setRotationAxis(CKVVector3D const& axis, CKVVector3D const& normal)
{
    mRotationAxis = axis;
    mRotationNormal = normal;
    dirty(true);
}

} // namespace Kelvor
