#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"

#include <osg/Matrixd>

namespace Kelvor {

// The one conversion between our column-vector matrices and OpenSceneGraph's
// row-vector osg::Matrixd, in each direction: a transposition,
// osg(r, c) = m(c, r). The translation of m's column 3 therefore lands in
// the osg matrix's last row, where osg::Matrixd::getTrans reads it.
//
// Towards OpenSceneGraph every element passes through single precision:
// matrices sent to the scene graph have float accuracy so that what is drawn
// does not depend on which path a matrix took. The way back keeps double
// precision.

inline osg::Matrixd toOsgMatrix(CKVMatrix3D const& m)
{
    osg::Matrixd result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            result(r, c) = static_cast<double>(static_cast<float>(m(c, r)));
    }
    return result;
}

inline CKVMatrix3D fromOsgMatrix(osg::Matrixd const& m)
{
    CKVMatrix3D result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            result(r, c) = m(c, r);
    }
    return result;
}

} // namespace Kelvor
