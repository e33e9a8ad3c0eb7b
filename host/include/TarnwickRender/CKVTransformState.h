#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"
#include "TarnwickRender/CKVSceneNodeState.h"

#include <mutex>

namespace Kelvor {

// How a node is placed in its parent: not at all, by a matrix, or by an
// automatic transform that keeps it at a base position, optionally at a
// constant size on screen and turned towards the viewer or about an axis.
class CKVTransformState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVTransformState)
public:
    enum Mode : int { kNone = 0, kMatrix = 1, kAutoTransform = 2 };
    enum RotationMode : int { kNoRotation = 0, kRotateToScreen = 1, kRotateToAxis = 2 };

    CKVTransformState();
    ~CKVTransformState() override;

    Type getType() const override { return kTransform; }
    CKVSceneNodeState* clone() const override { return new CKVTransformState(*this); }

    Mode getTransformMode() const { return mMode; }
    void setTransformMode(Mode mode);

    // In kMatrix mode the placement. In kAutoTransform mode an output: the
    // backend writes back the matrix it computed, which does not dirty the
    // state (it would otherwise be reapplied every frame).
    CKVMatrix3D getMatrix() const;
    void setMatrix(CKVMatrix3D const& matrix);

    CKVPoint3D getBasePosition() const { return mBasePosition; }
    void setBasePosition(CKVPoint3D const& position);
    // Keep a constant size on screen.
    bool getAutoScale() const { return mAutoScale; }
    void setAutoScale(bool autoScale);

    RotationMode getRotationMode() const { return mRotationMode; }
    void setRotationMode(RotationMode mode);
    void getRotationAxis(CKVVector3D& axis, CKVVector3D& normal) const;
    void setRotationAxis(CKVVector3D const& axis, CKVVector3D const& normal);

private:
    CKVTransformState(CKVTransformState const& other);

    Mode mMode;
    // The matrix is written back during traversals while the host may read it.
    mutable std::mutex mMatrixMutex;
    CKVMatrix3D mMatrix;
    CKVPoint3D mBasePosition;
    bool mAutoScale;
    RotationMode mRotationMode;
    CKVVector3D mRotationAxis;
    CKVVector3D mRotationNormal;
};

} // namespace Kelvor
