#pragma once

#include <osg/BoundingBox>
#include <osg/Geometry>
#include <osg/ref_ptr>

namespace Kelvor {

// A geometry that reports an inverted (invalid) bounding box, so it adds
// nothing to any bound, and that is never culled: the base of full-screen
// and environment drawables.
class CBGGeometry : public osg::Geometry
{
public:
    // Answers the inverted box (minimum FLT_MAX, maximum -FLT_MAX) for any
    // drawable.
    class InvalidBoxCallback : public osg::Drawable::ComputeBoundingBoxCallback
    {
    public:
        InvalidBoxCallback() = default;
        InvalidBoxCallback(InvalidBoxCallback const& other, osg::CopyOp const& copyop)
            : osg::Drawable::ComputeBoundingBoxCallback(other, copyop)
        {
        }
        META_Object(Kelvor, InvalidBoxCallback);

        osg::BoundingBox computeBound(osg::Drawable const&) const override;
    };

    CBGGeometry();
    CBGGeometry(CBGGeometry const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new CBGGeometry; }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new CBGGeometry(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override
    {
        return dynamic_cast<CBGGeometry const*>(object) != nullptr;
    }
    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CBGGeometry"; }

    static osg::BoundingBox invalidBox();

protected:
    ~CBGGeometry() override = default;

private:
    osg::ref_ptr<InvalidBoxCallback> mBoxCallback;
};

} // namespace Kelvor
