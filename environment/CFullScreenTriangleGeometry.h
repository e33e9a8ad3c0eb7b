#pragma once

#include "environment/CBGGeometry.h"

namespace Kelvor {

// One triangle that covers the whole viewport. It has no arrays: the vertex
// shader makes the three corners from gl_VertexID, so drawing is a single
// glDrawArrays(GL_TRIANGLES, 0, 3) with whatever program the state gives.
class CFullScreenTriangleGeometry : public CBGGeometry
{
public:
    CFullScreenTriangleGeometry();
    CFullScreenTriangleGeometry(CFullScreenTriangleGeometry const& other,
                                osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new CFullScreenTriangleGeometry; }
    osg::Object* clone(osg::CopyOp const& copyop) const override
    {
        return new CFullScreenTriangleGeometry(*this, copyop);
    }
    bool isSameKindAs(osg::Object const* object) const override
    {
        return dynamic_cast<CFullScreenTriangleGeometry const*>(object) != nullptr;
    }
    char const* libraryName() const override { return "kvosg"; }
    // The name other code has always compared against, spelling included.
    char const* className() const override { return "CFillScreenTriangleGeometry"; }

    void drawImplementation(osg::RenderInfo& renderInfo) const override;

protected:
    ~CFullScreenTriangleGeometry() override = default;
};

} // namespace Kelvor
