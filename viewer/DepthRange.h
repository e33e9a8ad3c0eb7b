#pragma once

#include <osg/StateAttribute>

namespace Kelvor {

// The window depth range alone (see DepthFunc for why osg::Depth is split).
class DepthRange : public osg::StateAttribute
{
public:
    static constexpr unsigned int kType = 103;

    explicit DepthRange(double zNear = 0.0, double zFar = 1.0);
    DepthRange(DepthRange const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new DepthRange(); }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new DepthRange(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override { return "Tarnwick"; }
    char const* className() const override { return "DepthRange"; }
    Type getType() const override { return static_cast<Type>(kType); }

    int compare(osg::StateAttribute const& other) const override;
    bool getModeUsage(ModeUsage&) const override { return false; }
    void apply(osg::State& state) const override;

    void setRange(double zNear, double zFar)
    {
        mZNear = zNear;
        mZFar = zFar;
    }
    double getZNear() const { return mZNear; }
    double getZFar() const { return mZFar; }

protected:
    ~DepthRange() override;

private:
    double mZNear;
    double mZFar;
};

} // namespace Kelvor
