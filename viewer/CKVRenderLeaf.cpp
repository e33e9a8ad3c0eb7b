#include "viewer/CKVRenderLeaf.h"

#include "scene/KVBindlessHandleUniform.h"
#include "viewer/CKVOSGState.h"

#include <osgUtil/StateGraph>

namespace Kelvor {

CKVRenderLeaf::CKVRenderLeaf(osg::Drawable* drawable, osg::RefMatrix* projection, osg::RefMatrix* modelView,
                             osg::RefMatrix* model, osg::RefMatrix* view, float depth,
                             unsigned int traversalOrderNumber)
    : osgUtil::RenderLeaf(drawable, projection, modelView, depth, traversalOrderNumber)
    , mModel(model)
    , mView(view)
{
}

CKVRenderLeaf::~CKVRenderLeaf() = default;

void CKVRenderLeaf::set(osg::Drawable* drawable, osg::RefMatrix* projection, osg::RefMatrix* modelView,
                        osg::RefMatrix* model, osg::RefMatrix* view, float depth, unsigned int traversalOrderNumber)
{
    osgUtil::RenderLeaf::set(drawable, projection, modelView, depth, traversalOrderNumber);
    mModel = model;
    mView = view;
}

void CKVRenderLeaf::reset()
{
    osgUtil::RenderLeaf::reset();
    mModel = nullptr;
    mView = nullptr;
}

void CKVRenderLeaf::render(osg::RenderInfo& renderInfo, osgUtil::RenderLeaf* previous)
{
    osg::State& state = *renderInfo.getState();
    CKVOSGState* kvState = CKVOSGState::asKVState(state);
    if (kvState == nullptr)
    {
        osgUtil::RenderLeaf::render(renderInfo, previous);
        return;
    }
    if (state.getAbortRendering())
        return;

    static osg::Matrixd const identity;
    osg::Matrixd const& model = mModel.valid() ? *mModel : identity;
    kvState->applyProjectionMatrix(_projection.get());
    kvState->applyMatrices(_modelview.get(), mModel.get(), mView.get(), kvState->lastModelMatrix(*_drawable, model));
    applyStateAndDraw(renderInfo, previous);
}

void CKVRenderLeaf::applyStateAndDraw(osg::RenderInfo& renderInfo, osgUtil::RenderLeaf* previous)
{
    osg::State& state = *renderInfo.getState();
    // As the stock leaf: only walk the state graph as far as it differs
    // from the previous leaf's.
    if (previous != nullptr)
    {
        osgUtil::StateGraph* previousGraph = previous->_parent;
        osgUtil::StateGraph* previousParent = previousGraph->_parent;
        if (previousParent != _parent->_parent)
        {
            osgUtil::StateGraph::moveStateGraph(state, previousParent, _parent->_parent);
            state.apply(_parent->getStateSet());
        }
        else if (_parent != previousGraph)
        {
            state.apply(_parent->getStateSet());
        }
    }
    else
    {
        osgUtil::StateGraph::moveStateGraph(state, nullptr, _parent->_parent);
        state.apply(_parent->getStateSet());
    }
    // Bindless sampler handles take a call the stock uniform path never makes.
    KVBindlessHandleUniform::applyCurrent(state, _parent->getStateSet());
    _drawable->draw(renderInfo);
}

} // namespace Kelvor
