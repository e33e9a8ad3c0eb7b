#pragma once

#include <osgUtil/IntersectionVisitor>

#include <vector>

namespace Kelvor {

class CKVOSGGeometry;

// The intersection visitor of picks and selections. An instanced
// CKVOSGGeometry is one drawable with many placements: the visitor tries it
// once per instance, each time with that instance's matrix on the model
// stack and a fresh clone of the intersector, so that the intersector sees
// the query in the instance's own frame. While it does, the current instance
// index names the instance; it is 0 everywhere else.
//
// Only the instances that the query can reach are tried: the geometry's
// instance search (a hierarchy of instance boxes) names them, and the rest,
// whose boxes the query misses, could not have been hit. With the search
// switched off every instance is tried, which is the reference the search
// is checked against.
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

    void setUseInstanceSearch(bool use) { mUseInstanceSearch = use; }

private:
    // The instances of `geometry` worth trying, or false when all are.
    bool reachableInstances(CKVOSGGeometry& geometry, std::vector<unsigned int>& out);
    void applyInstance(osg::Drawable& drawable, osg::Matrixd const& instance, unsigned int index);

    unsigned int mCurrentInstanceIndex = 0;
    bool mUseInstanceSearch = true;
};

} // namespace Kelvor
