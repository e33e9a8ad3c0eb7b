#pragma once

#include <osg/VertexArrayState>

namespace Kelvor {

// Sends one array to one generic vertex attribute location, with an optional
// instance divisor. Every array of the backend's geometry goes through these,
// whatever the state's aliasing setting, so that shaders find position,
// normal, texture coordinate, instance rows and colour at fixed locations.
class KVOSGVertexAttribArrayDispatch : public osg::VertexArrayState::ArrayDispatch
{
public:
    KVOSGVertexAttribArrayDispatch(unsigned int unit, unsigned int divisor);

    char const* className() const override { return "KVOSGVertexAttribArrayDispatch"; }
    bool isVertexAttribDispatch() const override { return true; }

    void enable_and_dispatch(osg::State& state, osg::Array const* array) override;
    void enable_and_dispatch(osg::State& state, osg::Array const* array, osg::GLBufferObject const* vbo) override;
    void enable_and_dispatch(osg::State& state, GLint size, GLenum type, GLsizei stride, GLvoid const* pointer,
                             GLboolean normalized) override;

    void dispatch(osg::State& state, osg::Array const* array) override;
    void dispatch(osg::State& state, osg::Array const* array, osg::GLBufferObject const* vbo) override;
    void dispatch(osg::State& state, GLint size, GLenum type, GLsizei stride, GLvoid const* pointer,
                  GLboolean normalized) override;

    void disable(osg::State& state) override;

    unsigned int getUnit() const { return mUnit; }
    unsigned int getDivisor() const { return mDivisor; }

    // True when `dispatch` is one of these (told by class name).
    static bool isKind(osg::VertexArrayState::ArrayDispatch const& dispatch);

protected:
    ~KVOSGVertexAttribArrayDispatch() override;

private:
    static osg::GLExtensions* extensions(osg::State& state);
    void pointer(osg::GLExtensions& gl, osg::Array const& array, GLvoid const* data) const;
    void applyDivisor(osg::GLExtensions& gl) const;

    unsigned int mUnit;
    unsigned int mDivisor;
};

} // namespace Kelvor
