#pragma once

#include <osg/BoundingSphere>
#include <osg/Geode>
#include <osg/ref_ptr>

namespace Kelvor {

// A geode for full-screen and environment drawing. It reports an invalid
// bound, so it never widens its parents' bounds nor the near/far range, and
// it is never culled. Other cull code recognises it by className()
// "CBGGeode".
class CBGGeode : public osg::Geode
{
public:
    // Answers the invalid sphere (centre 0, radius -1) for any node.
    class InvalidBoundCallback : public osg::Node::ComputeBoundingSphereCallback
    {
    public:
        InvalidBoundCallback() = default;
        InvalidBoundCallback(InvalidBoundCallback const& other, osg::CopyOp const& copyop)
            : osg::Node::ComputeBoundingSphereCallback(other, copyop)
        {
        }
        META_Object(Kelvor, InvalidBoundCallback);

        osg::BoundingSphere computeBound(osg::Node const&) const override;
    };

    CBGGeode();
    CBGGeode(CBGGeode const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new CBGGeode; }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new CBGGeode(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override
    {
        return dynamic_cast<CBGGeode const*>(object) != nullptr;
    }
    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CBGGeode"; }

    osg::BoundingSphere computeBound() const override;

protected:
    ~CBGGeode() override = default;

private:
    osg::ref_ptr<InvalidBoundCallback> mBoundCallback;
};

} // namespace Kelvor
