#pragma once

#include "environment/CBGGeode.h"

#include <osg/Group>
#include <osg/ref_ptr>

namespace Kelvor {

// A group that, like CBGGeode, reports an invalid bound and is never culled:
// a parent for full-screen and environment drawing.
class CBGGroup : public osg::Group
{
public:
    CBGGroup();
    CBGGroup(CBGGroup const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new CBGGroup; }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new CBGGroup(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override
    {
        return dynamic_cast<CBGGroup const*>(object) != nullptr;
    }
    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CBGGroup"; }

    osg::BoundingSphere computeBound() const override;

protected:
    ~CBGGroup() override = default;

private:
    osg::ref_ptr<CBGGeode::InvalidBoundCallback> mBoundCallback;
};

} // namespace Kelvor
