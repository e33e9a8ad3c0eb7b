#pragma once

#include <osg/StateAttribute>

namespace Kelvor {

// The depth test function alone. osg::Depth sets function, mask and range
// together, so a state set that only wants to stop depth writes would also
// reset the function its parents chose; the three depth attributes
// (DepthFunc, DepthMask, DepthRange) let each part be inherited separately.
class DepthFunc : public osg::StateAttribute
{
public:
    // Type number of the attribute; 100 belongs to the bindless texture.
    static constexpr unsigned int kType = 101;

    explicit DepthFunc(GLenum function = GL_LESS);
    DepthFunc(DepthFunc const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    osg::Object* cloneType() const override { return new DepthFunc(); }
    osg::Object* clone(osg::CopyOp const& copyop) const override { return new DepthFunc(*this, copyop); }
    bool isSameKindAs(osg::Object const* object) const override;
    char const* libraryName() const override { return "Tarnwick"; }
    char const* className() const override { return "DepthFunc"; }
    Type getType() const override { return static_cast<Type>(kType); }

    int compare(osg::StateAttribute const& other) const override;
    // Governs no GL mode: GL_DEPTH_TEST stays with whoever sets it.
    bool getModeUsage(ModeUsage&) const override { return false; }
    void apply(osg::State& state) const override;

    void setFunction(GLenum function) { mFunction = function; }
    GLenum getFunction() const { return mFunction; }

protected:
    ~DepthFunc() override;

private:
    GLenum mFunction;
};

} // namespace Kelvor
