#include "viewer/CKVSceneView.h"

#include "viewer/CKVCullVisitor.h"

namespace Kelvor {

CKVSceneView::CKVSceneView(osg::DisplaySettings* displaySettings)
    : osgUtil::SceneView(displaySettings)
{
}

CKVSceneView::CKVSceneView(CKVSceneView const& other, osg::CopyOp const& copyop)
    : osgUtil::SceneView(other, copyop)
{
}

CKVSceneView::~CKVSceneView() = default;

void CKVSceneView::setDefaults(unsigned int options)
{
    osgUtil::SceneView::setDefaults(options);
    // The stock defaults make a new visitor from the global prototype, which
    // would silently drop ours. State graph and render stage are handed to
    // the visitor again at every cull, so copying them here is enough.
    osg::ref_ptr<CKVCullVisitor> visitor = new CKVCullVisitor;
    visitor->setStateGraph(getStateGraph());
    visitor->setRenderStage(getRenderStage());
    setCullVisitor(visitor.get());
}

} // namespace Kelvor
