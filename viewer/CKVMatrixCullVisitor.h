#pragma once

#include "viewer/CKVRenderLeaf.h"

#include <osgUtil/CullVisitor>

#include <cstddef>
#include <vector>

namespace Kelvor {

// The cull side of the matrix hook. Shaders get model and view matrices
// separately (EntityInfo and CameraInfo), while the stock cull visitor only
// knows their product, the model view matrix. This visitor keeps a second
// stack beside the stock one, of (model, view) pairs:
//   - a Transform with a relative frame multiplies its local matrix into the
//     model and keeps the view; an absolute one makes the model its matrix
//     and the view identity;
//   - a Camera with an absolute frame starts model identity, view its view
//     matrix; a relative one multiplies its view matrix into the view
//     (post-multiply) or into the model (pre-multiply);
// so that model x view is the model view matrix at every node, exactly.
// Where something pushed a model view matrix past these operations (a cull
// callback, say) the pair falls back to identity and that model view. Each
// drawable becomes a CKVRenderLeaf carrying the pair; its render() hands
// them to CKVOSGState. Pairs share matrix objects, one per transform and
// camera, so that the state recognises unchanged matrices by pointer.
// Matrices come from the stock visitor's per-frame pool and leaves from a
// pool of this visitor, so culling allocates nothing after the first frames.
//
// The last model matrix is not a cull matter: the state keeps it per
// drawable at draw time (CKVLastModelMatrixStore).
//
// Billboards are culled by the stock code: their leaves are stock leaves
// and leave the blocks as they were.
class CKVMatrixCullVisitor : public osgUtil::CullVisitor
{
public:
    CKVMatrixCullVisitor();
    CKVMatrixCullVisitor(CKVMatrixCullVisitor const& other);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVMatrixCullVisitor"; }

    using osg::NodeVisitor::clone;
    osgUtil::CullVisitor* clone() const override;

    void reset() override;

    using osgUtil::CullVisitor::apply;
    void apply(osg::Drawable& drawable) override;
    void apply(osg::Transform& node) override;
    void apply(osg::Camera& camera) override;

    // The model and view matrices at the current point of the traversal
    // (null view: identity).
    osg::RefMatrix* getCurrentModelMatrix() { return currentPair().model; }
    osg::RefMatrix* getCurrentViewMatrix() { return currentPair().view; }

    // For cull callbacks that walk a transform's children themselves (the
    // scene passes of the frame effects): pushes the model view matrix and
    // the (model, view) pair just as apply(Transform) does, so that the
    // shaders still see the node's own model matrix. Pop with popTransform.
    void pushTransform(osg::Transform const& node);
    void popTransform();

protected:
    ~CKVMatrixCullVisitor() override;

private:
    struct MatrixPair
    {
        osg::RefMatrix* model;
        osg::RefMatrix* view;
        // Size of the stock model view stack while this pair is current.
        std::size_t depth;
    };

    MatrixPair currentPair();
    // For the node about to push one model view matrix.
    void pushPair(osg::RefMatrix* model, osg::RefMatrix* view);
    void addLeaf(osg::Drawable& drawable, osg::RefMatrix& modelView, float depth);
    CKVRenderLeaf* createOrReuseLeaf(osg::Drawable& drawable, osg::RefMatrix& modelView, MatrixPair const& pair,
                                     float depth);

    std::vector<MatrixPair> mPairs;
    osg::ref_ptr<osg::RefMatrix> mIdentity;
    std::vector<osg::ref_ptr<CKVRenderLeaf>> mLeaves;
    std::size_t mNextLeaf = 0;
};

} // namespace Kelvor
