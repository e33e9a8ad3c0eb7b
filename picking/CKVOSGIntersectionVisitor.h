#pragma once

#include <osgUtil/IntersectionVisitor>

namespace Kelvor {

// The intersection visitor of picks and selections. An instanced
// CKVOSGGeometry is one drawable with many placements: the visitor tries it
// once per instance, each time with that instance's matrix on the model
// stack and a fresh clone of the intersector, so that the intersector sees
// the query in the instance's own frame. While it does, the current instance
// index names the instance; it is 0 everywhere else.
class CKVOSGIntersectionVisitor : public osgUtil::IntersectionVisitor
{
public:
    static char const* const s_className;

    explicit CKVOSGIntersectionVisitor(osgUtil::Intersector* intersector = nullptr);

    char const* libraryName() const override;
    char const* className() const override;

    void apply(osg::Drawable& drawable) override;
    // The stock geode hands its drawables straight to the intersector; ours
    // go through apply(osg::Drawable&) so that instances are honoured there
    // too.
    void apply(osg::Geode& geode) override;
    using osgUtil::IntersectionVisitor::apply;

    unsigned int getCurrentInstanceIndex() const { return mCurrentInstanceIndex; }

    // The current instance index of `visitor` when it is one of ours, else 0.
    static unsigned int currentInstanceIndexOf(osg::NodeVisitor const& visitor);

private:
    unsigned int mCurrentInstanceIndex = 0;
};

} // namespace Kelvor
