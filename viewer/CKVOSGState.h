#pragma once

#include "viewer/CKVLastModelMatrixStore.h"

#include <osg/Array>
#include <osg/Matrixf>
#include <osg/State>

namespace osg {
class Drawable;
class GLBufferObject;
class GraphicsContext;
}

namespace Kelvor {

// The GL state of every backend window. Besides the stock state it keeps the
// two uniform blocks that all shaders read their matrices from current
// during draw:
//   CameraInfo (binding 0): kv_ViewMatrix, kv_ViewMatrixInverse,
//     kv_ViewProjectionMatrix, kv_ProjectionMatrix at bytes 0, 64, 128, 192
//     (the last-frame matrices after them are the root's business);
//   EntityInfo (binding 1): kv_ModelMatrix, kv_lastModelMatrix at 0 and 64.
// Only what changed is written, with glBufferSubData: a run of draws that
// share a view writes nothing into CameraInfo, and draws that share a
// transform write nothing at all. Matrices are told apart by pointer (the
// cull visitor hands out one matrix object per transform and camera), the
// last model matrix by value.
//
// It also owns the table of vertex attribute locations: 0 position,
// 1 normal, 2 texture coordinate 0, 3-6 instance matrix rows
// kv_InstanceMatrixR1..R4, 7 colour.
//
// Stock OpenSceneGraph 3.6 has no hook where a render leaf applies its
// matrices (State::applyProjectionMatrix and applyModelViewMatrix are not
// virtual). The operations below hide the stock ones and are called by
// CKVRenderLeaf, which the cull visitor makes with each drawable's model
// and view matrices; see CKVMatrixCullVisitor. Stock render leaves still
// draw correctly but leave the blocks as they were.
class CKVOSGState : public osg::State
{
public:
    CKVOSGState();

    // Replaces the stock state of `context` with a new CKVOSGState, the way
    // the window does right after it is made:
    //     CKVOSGState::install(*window);
    // The context id, the graphics context, the stock state's switches
    // (aliasing, matrix uniforms, display settings, pool sizes) carry over;
    // the alias table is set up. Null when the context has no state yet.
    // Do it before the first frame: GL objects the stock state made belong
    // to the context, not to the state, and stay valid.
    static CKVOSGState* install(osg::GraphicsContext& context);
    // The same with a state made by the caller (a subclass, for instance).
    static bool install(osg::GraphicsContext& context, CKVOSGState& state);

    // The state as a CKVOSGState, or null for any other state.
    static CKVOSGState* asKVState(osg::State& state);

    // Replaces the stock alias table with the backend's locations. Units
    // 1-7 of texture coordinates, which the backend doesn't use, get
    // locations 8-14: OpenSceneGraph's global vertex array state assumes
    // eight texture units whenever aliasing is on.
    void setUpVertexAttribAliases();
    static constexpr unsigned int kInstanceRowCount = 4;
    osg::VertexAttribAlias const& getInstanceRowAlias(unsigned int row) const { return mInstanceRowAliases[row]; }

    // The float arrays behind CameraInfo and EntityInfo, each with a
    // uniform buffer object; the render context hands them over.
    void setCameraArray(osg::FloatArray* array) { mCameraArray = array; mCameraStale = true; }
    osg::FloatArray* getCameraArray() const { return mCameraArray.get(); }
    void setEntityArray(osg::FloatArray* array) { mEntityArray = array; mEntityStale = true; }
    osg::FloatArray* getEntityArray() const { return mEntityArray.get(); }

    // Null means identity. A projection other than the current one marks
    // CameraInfo's projection part for the next applyMatrices.
    virtual void applyProjectionMatrix(osg::RefMatrix const* projection);

    // The draw-time operation: takes the drawable's model view, model, view
    // (null: identity) and last model matrices, writes what changed into
    // the blocks and makes `modelView` the state's model view matrix.
    virtual void applyMatrices(osg::RefMatrix const* modelView, osg::RefMatrix const* model,
                               osg::RefMatrix const* view, osg::Matrixf const& lastModel);
    // The same for callers with plain matrices, told apart by value.
    virtual void applyMatrices(osg::RefMatrix const* modelView, osg::Matrixd const& model,
                               osg::Matrixd const& view, osg::Matrixf const& lastModel);

    // The last model matrix of `drawable`, drawn now with `model`; advances
    // once per frame of the state's frame stamp.
    osg::Matrixf const& lastModelMatrix(osg::Drawable const& drawable, osg::Matrixd const& model);

    osg::Matrixd const& getModelMatrix() const { return *mModel; }
    osg::Matrixd const& getViewMatrix() const { return *mView; }
    osg::Matrixf const& getLastModelMatrix() const { return mLastModel; }
    bool getProjectionDirty() const { return mProjectionDirty; }

protected:
    ~CKVOSGState() override;

    // Every write into a block goes through here: `offset` is in bytes from
    // the start of the buffer object.
    virtual void writeUniformBuffer(osg::GLBufferObject& buffer, GLintptr offset, GLsizeiptr size,
                                    void const* data);

private:
    // The GL buffer of `array` in this context, uploaded first when its
    // array changed (then `reloaded` is set: the upload overwrote all
    // matrices written here). Null when there is none yet.
    osg::GLBufferObject* uniformBuffer(osg::FloatArray* array, bool& reloaded);
    void updateEntityInfo(bool modelChanged, bool lastModelChanged);
    void updateCameraInfo(bool viewChanged, bool projectionChanged);
    void write(osg::GLBufferObject& buffer, osg::FloatArray const& array, unsigned int firstByte,
               unsigned int byteCount, float const* data);

    osg::VertexAttribAlias mInstanceRowAliases[kInstanceRowCount];
    osg::ref_ptr<osg::FloatArray> mCameraArray;
    osg::ref_ptr<osg::FloatArray> mEntityArray;
    bool mProjectionDirty = true;

    // What the blocks hold; held by reference so that the cull visitor's
    // matrix pool can't hand the same object out with other values.
    osg::ref_ptr<osg::RefMatrix const> mProjection;
    osg::ref_ptr<osg::RefMatrix const> mModel;
    osg::ref_ptr<osg::RefMatrix const> mView;
    osg::Matrixf mLastModel;
    osg::ref_ptr<osg::RefMatrix> mModelCache;
    osg::ref_ptr<osg::RefMatrix> mViewCache;
    // Set when a block may not hold the matrices above (never written, or
    // its buffer didn't exist): the next draw writes it whole.
    bool mCameraStale = true;
    bool mEntityStale = true;

    CKVLastModelMatrixStore mLastModels;
};

} // namespace Kelvor
