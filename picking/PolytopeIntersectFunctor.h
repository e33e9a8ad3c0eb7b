#pragma once

#include "picking/PolytopeIntersectorSettings.h"

#include <osg/KdTree>
#include <osg/Polytope>
#include <osg/Vec3d>
#include <osg/Vec3f>

#include <vector>

namespace Kelvor {
namespace PolytopeIntersectorUtils {

// The primitive tests of a polytope query, for float (osg::Vec3f) or double
// (osg::Vec3d) arithmetic; wrapped in osg::TemplatePrimitiveFunctor, which
// hands it points, lines, triangles and quads as float vertices (and warns
// about the vertex arrays it cannot read). A primitive that has any part
// inside the polytope is a hit; its record holds the clipped part.
template <typename Vec3>
class IntersectFunctor
{
public:
    typedef typename Vec3::value_type value_type;
    typedef std::vector<Vec3> Vertices;

    IntersectFunctor();

    void setSettings(Settings* settings) { mSettings = settings; }
    bool getHit() const { return mHit; }

    // From osg::TemplatePrimitiveFunctor, in the order it draws; each call
    // is the next primitive.
    void operator()(osg::Vec3 const& v0, bool);
    void operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, bool);
    void operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, osg::Vec3 const& v2, bool);
    void operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, osg::Vec3 const& v2, osg::Vec3 const& v3, bool);

    // Walks a kd-tree from `node` instead; primitives keep the indices of
    // their source primitives.
    void walk(osg::KdTree const& tree, osg::KdTree::KdNode const& node);

private:
    void point(Vec3 const& v0, unsigned int primitiveIndex);
    void line(Vec3 const& v0, Vec3 const& v1, unsigned int primitiveIndex);
    void polygon(Vec3 const* vertices, unsigned int count, unsigned int primitiveIndex);
    void leaf(osg::KdTree const& tree, int first, int count);

    // Clips the working list by every active plane; `closed` joins its last
    // vertex back to the first. False when nothing is left.
    bool clip(bool closed);
    void addIntersection(unsigned int primitiveIndex);
    bool done() const { return mSettings->mLimitOneIntersection && mHit; }
    osg::Polytope& polytope() const;

    Vertices mVertices;
    Vertices mClipped;
    unsigned int mPrimitiveIndex = 0;
    bool mHit = false;
    osg::ref_ptr<Settings> mSettings;
};

extern template class IntersectFunctor<osg::Vec3f>;
extern template class IntersectFunctor<osg::Vec3d>;

} // namespace PolytopeIntersectorUtils
} // namespace Kelvor
