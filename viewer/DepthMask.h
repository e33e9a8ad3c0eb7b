#pragma once

#include <osg/StateAttribute>

namespace Kelvor {

// Whether depth writes are on, without touching the depth function or range
// (see DepthFunc for why osg::Depth is split).
class DepthMask : public osg::StateAttribute
{
public:
    static constexpr unsigned int kType = 102;

    explicit DepthMask(bool mask = true);
    DepthMask(DepthMask const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new DepthMask(); }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new DepthMask(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override { return "Tarnwick"; }
    char const* className() const override { return "DepthMask"; }
    Type getType() const override { return static_cast<Type>(kType); }

    int compare(osg::StateAttribute const& other) const override;
    bool getModeUsage(ModeUsage&) const override { return false; }
    void apply(osg::State& state) const override;

    void setMask(bool mask) { mMask = mask; }
    bool getMask() const { return mMask; }

protected:
    ~DepthMask() override;

private:
    bool mMask;
};

} // namespace Kelvor
