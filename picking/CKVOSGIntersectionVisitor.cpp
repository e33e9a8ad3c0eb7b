#include "picking/CKVOSGIntersectionVisitor.h"

#include "picking/CKVInstanceMatrix.h"
#include "picking/CKVInstanceSearch.h"
#include "picking/CKVOSGLineSegmentIntersector.h"
#include "picking/CKVOSGPolytopeIntersector.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"

#include <osg/Geode>

#include <cstring>
#include <vector>

namespace Kelvor {

namespace {

osg::Matrixd instanceMatrix(CKVOSGGeometry const& geometry, unsigned int index)
{
    osg::Vec4 rows[CKVOSGGeometry::kInstanceRowCount];
    for (unsigned int r = 0; r < CKVOSGGeometry::kInstanceRowCount; ++r)
        rows[r] = (*static_cast<osg::Vec4Array const*>(geometry.getInstanceMatrixRow(r)))[index];
    return osg::Matrixd(rows[0].x(), rows[0].y(), rows[0].z(), rows[0].w(), rows[1].x(), rows[1].y(), rows[1].z(),
                        rows[1].w(), rows[2].x(), rows[2].y(), rows[2].z(), rows[2].w(), rows[3].x(), rows[3].y(),
                        rows[3].z(), rows[3].w());
}

} // namespace

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
    CKVOSGGeometry& geometry = static_cast<CKVOSGGeometry&>(drawable);

    // Rows of unequal length throw std::out_of_range out of the query; the
    // command's dispatch turns that into a failed query.
    std::vector<unsigned int> reachable;
    if (mUseInstanceSearch && reachableInstances(geometry, reachable))
    {
        for (unsigned int i : reachable)
            applyInstance(drawable, instanceMatrix(geometry, i), i);
        mCurrentInstanceIndex = 0;
        return;
    }

    std::vector<osg::Matrixd> instances;
    if (!geometry.getInstanceMatrices(instances))
    {
        osgUtil::IntersectionVisitor::apply(drawable);
        return;
    }
    for (unsigned int i = 0; i < instances.size(); ++i)
        applyInstance(drawable, instances[i], i);
    mCurrentInstanceIndex = 0;
}

void CKVOSGIntersectionVisitor::applyInstance(osg::Drawable& drawable, osg::Matrixd const& instance,
                                              unsigned int index)
{
    osg::RefMatrixd const* top = getModelMatrix();
    osg::ref_ptr<CKVInstanceMatrix> model = new CKVInstanceMatrix(top ? osg::Matrixd(*top) : osg::Matrixd(), index);
    model->preMult(instance);
    pushModelMatrix(model.get());
    push_clone();
    mCurrentInstanceIndex = index;
    osgUtil::IntersectionVisitor::apply(drawable);
    pop_clone();
    popModelMatrix();
}

bool CKVOSGIntersectionVisitor::reachableInstances(CKVOSGGeometry& geometry, std::vector<unsigned int>& out)
{
    // With culling off the exact test ignores the host's vertex box, which
    // the instance boxes are made from.
    if (!geometry.getCullingActive())
        return false;
    CKVBufferGeometry* host = geometry.getHostGeometry();
    if (!host || !host->isKindOf(CKVBufferGeometryImp::desc()))
        return false;
    CKVInstanceBVH const* tree = static_cast<CKVBufferGeometryImp*>(host)->instanceSearch().current(geometry);
    if (!tree || !getIntersector())
        return false;

    // The query in the geometry's own frame: what the intersector's clone
    // for an instance would see, before the instance's matrix.
    osg::ref_ptr<osgUtil::Intersector> probe = getIntersector()->clone(*this);
    if (auto* line = dynamic_cast<CKVOSGLineSegmentIntersector*>(probe.get()))
    {
        tree->alongSegment(line->getStart(), line->getEnd(), out);
        return true;
    }
    if (auto* polytope = dynamic_cast<CKVOSGPolytopeIntersector*>(probe.get()))
    {
        tree->inPolytope(polytope->getPolytope(), out);
        return true;
    }
    return false;
}

} // namespace Kelvor
