#include "picking/CKVOSGIntersectionVisitor.h"

#include "picking/CKVInstanceMatrix.h"
#include "scene/CKVOSGGeometry.h"

#include <osg/Geode>

#include <cstring>
#include <vector>

namespace Kelvor {

char const* const CKVOSGIntersectionVisitor::s_className = "CKVOSGIntersectionVisitor";

CKVOSGIntersectionVisitor::CKVOSGIntersectionVisitor(osgUtil::Intersector* intersector)
    : osgUtil::IntersectionVisitor(intersector)
{
}

char const* CKVOSGIntersectionVisitor::libraryName() const
{
    return "Kelvor";
}

char const* CKVOSGIntersectionVisitor::className() const
{
    return s_className;
}

unsigned int CKVOSGIntersectionVisitor::currentInstanceIndexOf(osg::NodeVisitor const& visitor)
{
    if (std::strcmp(visitor.className(), s_className) != 0)
        return 0;
    return static_cast<CKVOSGIntersectionVisitor const&>(visitor).getCurrentInstanceIndex();
}

void CKVOSGIntersectionVisitor::apply(osg::Geode& geode)
{
    if (!enter(geode))
        return;
    for (unsigned int i = 0; i < geode.getNumDrawables(); ++i)
    {
        if (osg::Drawable* drawable = geode.getDrawable(i))
            apply(*drawable);
    }
    leave();
}

void CKVOSGIntersectionVisitor::apply(osg::Drawable& drawable)
{
    mCurrentInstanceIndex = 0;
    if (std::strcmp(drawable.className(), CKVOSGGeometry::s_className) != 0)
    {
        osgUtil::IntersectionVisitor::apply(drawable);
        return;
    }

    // Rows of unequal length throw std::out_of_range out of the query; the
    // command's dispatch turns that into a failed query.
    std::vector<osg::Matrixd> instances;
    if (!static_cast<CKVOSGGeometry&>(drawable).getInstanceMatrices(instances))
    {
        osgUtil::IntersectionVisitor::apply(drawable);
        return;
    }

    for (unsigned int i = 0; i < instances.size(); ++i)
    {
        osg::RefMatrixd const* top = getModelMatrix();
        osg::ref_ptr<CKVInstanceMatrix> model = new CKVInstanceMatrix(top ? osg::Matrixd(*top) : osg::Matrixd(), i);
        model->preMult(instances[i]);
        pushModelMatrix(model.get());
        push_clone();
        mCurrentInstanceIndex = i;
        osgUtil::IntersectionVisitor::apply(drawable);
        pop_clone();
        popModelMatrix();
    }
    mCurrentInstanceIndex = 0;
}

} // namespace Kelvor
