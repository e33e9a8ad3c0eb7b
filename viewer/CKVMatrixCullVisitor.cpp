#include "viewer/CKVMatrixCullVisitor.h"

#include <osg/Camera>
#include <osg/Drawable>
#include <osg/Transform>
#include <osgUtil/RenderBin>
#include <osgUtil/StateGraph>

namespace Kelvor {

namespace {

// Distance of `point` in front of the eye, the stock visitor's sort depth.
float eyeDepth(osg::Vec3 const& point, osg::Matrix const& modelView)
{
    return -(point.x() * modelView(0, 2) + point.y() * modelView(1, 2) + point.z() * modelView(2, 2)
             + modelView(3, 2));
}

} // namespace

CKVMatrixCullVisitor::CKVMatrixCullVisitor()
    : mIdentity(new osg::RefMatrix)
{
}

CKVMatrixCullVisitor::CKVMatrixCullVisitor(CKVMatrixCullVisitor const& other)
    : osg::Object(other)
    , osgUtil::CullVisitor(other)
    , mIdentity(new osg::RefMatrix)
{
}

CKVMatrixCullVisitor::~CKVMatrixCullVisitor() = default;

osgUtil::CullVisitor* CKVMatrixCullVisitor::clone() const
{
    return new CKVMatrixCullVisitor(*this);
}

void CKVMatrixCullVisitor::reset()
{
    osgUtil::CullVisitor::reset();
    for (std::size_t i = 0; i < mNextLeaf && i < mLeaves.size(); ++i)
        mLeaves[i]->reset();
    mNextLeaf = 0;
    mPairs.clear();
}

CKVMatrixCullVisitor::MatrixPair CKVMatrixCullVisitor::currentPair()
{
    std::size_t const depth = _modelviewStack.size();
    if (!mPairs.empty() && mPairs.back().depth == depth)
        return mPairs.back();
    // Top of a camera's traversal, or a model view matrix pushed by code
    // other than ours: the whole model view counts as view.
    return MatrixPair{mIdentity.get(), getModelViewMatrix(), depth};
}

void CKVMatrixCullVisitor::pushPair(osg::RefMatrix* model, osg::RefMatrix* view)
{
    mPairs.push_back(MatrixPair{model, view, _modelviewStack.size() + 1});
}

void CKVMatrixCullVisitor::apply(osg::Transform& node)
{
    if (isCulled(node))
        return;
    MatrixPair const parent = currentPair();
    osg::RefMatrix* model = createOrReuseMatrix(*parent.model);
    // The same call the stock visitor makes for the model view, so that
    // transforms that look at the visitor (auto transforms) agree.
    node.computeLocalToWorldMatrix(*model, this);
    osg::RefMatrix* view = node.getReferenceFrame() == osg::Transform::RELATIVE_RF ? parent.view : mIdentity.get();
    pushPair(model, view);
    osgUtil::CullVisitor::apply(node);
    mPairs.pop_back();
}

void CKVMatrixCullVisitor::pushTransform(osg::Transform const& node)
{
    MatrixPair const parent = currentPair();
    osg::RefMatrix* model = createOrReuseMatrix(*parent.model);
    node.computeLocalToWorldMatrix(*model, this);
    osg::RefMatrix* view = node.getReferenceFrame() == osg::Transform::RELATIVE_RF ? parent.view : mIdentity.get();
    pushPair(model, view);
    osg::RefMatrix* modelView = createOrReuseMatrix(*getModelViewMatrix());
    node.computeLocalToWorldMatrix(*modelView, this);
    pushModelViewMatrix(modelView, node.getReferenceFrame());
}

void CKVMatrixCullVisitor::popTransform()
{
    popModelViewMatrix();
    mPairs.pop_back();
}

void CKVMatrixCullVisitor::apply(osg::Camera& camera)
{
    MatrixPair const parent = currentPair();
    osg::RefMatrix* model = parent.model;
    osg::RefMatrix* view = parent.view;
    if (camera.getReferenceFrame() != osg::Transform::RELATIVE_RF)
    {
        model = mIdentity.get();
        view = createOrReuseMatrix(camera.getViewMatrix());
    }
    else if (camera.getTransformOrder() == osg::Camera::POST_MULTIPLY)
    {
        osg::Matrixd const parentView = parent.view != nullptr ? osg::Matrixd(*parent.view) : osg::Matrixd();
        view = createOrReuseMatrix(parentView * camera.getViewMatrix());
    }
    else
    {
        model = createOrReuseMatrix(camera.getViewMatrix() * *parent.model);
    }
    pushPair(model, view);
    osgUtil::CullVisitor::apply(camera);
    mPairs.pop_back();
}

// The stock operation with a CKVRenderLeaf in place of the stock leaf.
void CKVMatrixCullVisitor::apply(osg::Drawable& drawable)
{
    osg::RefMatrix& modelView = *getModelViewMatrix();
    osg::BoundingBox const& bounds = drawable.getBoundingBox();

    if (osg::Callback* callback = drawable.getCullCallback())
    {
        osg::DrawableCullCallback* drawableCallback = callback->asDrawableCullCallback();
        if (drawableCallback != nullptr)
        {
            if (drawableCallback->cull(this, &drawable, &_renderInfo))
                return;
        }
        else
        {
            callback->run(&drawable, this);
        }
    }
    if (drawable.isCullingActive() && isCulled(bounds))
        return;
    if (_computeNearFar && bounds.valid() && !updateCalculatedNearFar(modelView, drawable, false))
        return;

    unsigned int pushedStateSets = 0;
    if (osg::StateSet* stateSet = drawable.getStateSet())
    {
        pushStateSet(stateSet);
        ++pushedStateSets;
    }
    for (auto& stateFrustum : getCurrentCullingSet().getStateFrustumList())
    {
        if (stateFrustum.second.contains(bounds))
        {
            pushStateSet(stateFrustum.first.get());
            ++pushedStateSets;
        }
    }

    float const depth = bounds.valid() ? eyeDepth(bounds.center(), modelView) : 0.0f;
    if (!osg::isNaN(depth))
        addLeaf(drawable, modelView, depth);

    for (unsigned int i = 0; i < pushedStateSets; ++i)
        popStateSet();
}

void CKVMatrixCullVisitor::addLeaf(osg::Drawable& drawable, osg::RefMatrix& modelView, float depth)
{
    // A state graph joins its render bin with its first leaf.
    if (_currentStateGraph->leaves_empty())
        _currentRenderBin->addStateGraph(_currentStateGraph);
    _currentStateGraph->addLeaf(createOrReuseLeaf(drawable, modelView, currentPair(), depth));
}

CKVRenderLeaf* CKVMatrixCullVisitor::createOrReuseLeaf(osg::Drawable& drawable, osg::RefMatrix& modelView,
                                                       MatrixPair const& pair, float depth)
{
    osg::RefMatrix* projection = _projectionStack.back().get();
    // A leaf still referenced elsewhere (by a render stage kept from an
    // earlier frame) is skipped, as the stock pool does.
    while (mNextLeaf < mLeaves.size() && mLeaves[mNextLeaf]->referenceCount() > 1)
        ++mNextLeaf;
    if (mNextLeaf < mLeaves.size())
    {
        CKVRenderLeaf* leaf = mLeaves[mNextLeaf++].get();
        leaf->set(&drawable, projection, &modelView, pair.model, pair.view, depth, _traversalOrderNumber++);
        return leaf;
    }
    CKVRenderLeaf* leaf =
        new CKVRenderLeaf(&drawable, projection, &modelView, pair.model, pair.view, depth, _traversalOrderNumber++);
    mLeaves.push_back(leaf);
    ++mNextLeaf;
    return leaf;
}

} // namespace Kelvor
