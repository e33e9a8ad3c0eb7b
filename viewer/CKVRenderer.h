#pragma once

#include <osgViewer/Renderer>

namespace Kelvor {

// The renderer of every camera of the viewer. Only its construction differs
// from the stock one: the first scene view, the only one a single-threaded
// viewer uses, is a CKVSceneView culling with a CKVCullVisitor, and it gets
// no head light since our scenes have no fixed-function lighting.
class CKVRenderer : public osgViewer::Renderer
{
public:
    explicit CKVRenderer(osg::Camera* camera);

protected:
    ~CKVRenderer() override;
};

} // namespace Kelvor
