#pragma once

#include <osg/Matrix>
#include <osgUtil/RenderLeaf>

namespace Kelvor {

// A render leaf that knows its drawable's model and view matrices besides
// the model view. Its render() is where the backend's matrices reach the
// uniform blocks: with a CKVOSGState it applies the projection, then the
// model, view and last model matrices, then state and drawable like the
// stock leaf. With any other state it is a stock leaf.
//
// Made and pooled by CKVMatrixCullVisitor; see there for where the
// matrices come from.
class CKVRenderLeaf : public osgUtil::RenderLeaf
{
public:
    CKVRenderLeaf(osg::Drawable* drawable, osg::RefMatrix* projection, osg::RefMatrix* modelView,
                  osg::RefMatrix* model, osg::RefMatrix* view, float depth, unsigned int traversalOrderNumber);

    void set(osg::Drawable* drawable, osg::RefMatrix* projection, osg::RefMatrix* modelView, osg::RefMatrix* model,
             osg::RefMatrix* view, float depth, unsigned int traversalOrderNumber);
    // Drops every reference, so that pooled leaves hold nothing between frames.
    void reset();

    void render(osg::RenderInfo& renderInfo, osgUtil::RenderLeaf* previous) override;

    // Null means identity.
    osg::RefMatrix* getModelMatrix() const { return mModel.get(); }
    osg::RefMatrix* getViewMatrix() const { return mView.get(); }

protected:
    ~CKVRenderLeaf() override;

private:
    void applyStateAndDraw(osg::RenderInfo& renderInfo, osgUtil::RenderLeaf* previous);

    osg::ref_ptr<osg::RefMatrix> mModel;
    osg::ref_ptr<osg::RefMatrix> mView;
};

} // namespace Kelvor
