#pragma once

#include <osg/Geode>
#include <osg/Geometry>

namespace Kelvor {
namespace viewertest {

// A square in one flat colour, parallel to the xy plane, from `corner` (its
// lowest x and y) with sides `size`.
inline osg::ref_ptr<osg::Geode> makeFlatSquare(osg::Vec3 const& corner, float size, osg::Vec4 const& colour)
{
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(corner);
    vertices->push_back(corner + osg::Vec3(size, 0, 0));
    vertices->push_back(corner + osg::Vec3(size, size, 0));
    vertices->push_back(corner + osg::Vec3(0, size, 0));
    osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array;
    colours->push_back(colour);
    osg::ref_ptr<osg::Geometry> quad = new osg::Geometry;
    quad->setVertexArray(vertices.get());
    quad->setColorArray(colours.get(), osg::Array::BIND_OVERALL);
    quad->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_FAN, 0, 4));
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(quad.get());
    return geode;
}

} // namespace viewertest
} // namespace Kelvor
