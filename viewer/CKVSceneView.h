#pragma once

#include <osgUtil/SceneView>

namespace Kelvor {

// The scene view of the main pass and of every slave camera. Its one
// difference from the stock scene view: whatever (re)applies the defaults,
// the cull visitor stays a CKVCullVisitor.
class CKVSceneView : public osgUtil::SceneView
{
public:
    explicit CKVSceneView(osg::DisplaySettings* displaySettings = nullptr);
    CKVSceneView(CKVSceneView const& other, osg::CopyOp const& copyop = osg::CopyOp());

    META_Object(kvosg, CKVSceneView)

    using osgUtil::SceneView::setDefaults;
    void setDefaults(unsigned int options) override;

protected:
    ~CKVSceneView() override;
};

} // namespace Kelvor
