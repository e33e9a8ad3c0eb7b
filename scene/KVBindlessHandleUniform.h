#pragma once

#include <osg/GL>
#include <osg/Uniform>

namespace osg {
class State;
class StateSet;
}

namespace Kelvor {

// A sampler uniform that holds a bindless texture handle: an unsigned 64-bit
// value sent with glUniformHandleui64, the only call a driver accepts for a
// `layout(bindless_sampler)` sampler (glUniform1ui64v, which the stock
// uniform would use for a 64-bit value, is refused for samplers).
//
// The stock uniform's draw-time path cannot be redirected (Uniform::apply is
// not virtual), so this uniform carries no stock data and the stock path sends
// nothing for it; the backend's render leaf calls applyCurrent() once the
// state of a draw is applied, which sends the handles of the uniforms in
// effect to the current program.
//
//     auto* albedo = new KVBindlessHandleUniform("Albedo_Tx", 0, true);
//     stateSet->addUniform(albedo);
//     ...
//     albedo->set(handle, true);   // done by CKVOSGBindlessTexture::apply
class KVBindlessHandleUniform : public osg::Uniform
{
public:
    KVBindlessHandleUniform();
    // `bindless` marks the value as a texture handle; it is the only form
    // there is, and the flag is there so that call sites read the same as
    // for any other 64-bit uniform.
    KVBindlessHandleUniform(char const* name, unsigned long long handle, bool bindless);
    KVBindlessHandleUniform(KVBindlessHandleUniform const& other,
                            osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_Object(Kelvor, KVBindlessHandleUniform)

    bool set(unsigned long long handle, bool bindless);
    bool get(unsigned long long& handle) const;
    GLuint64 getHandle() const { return mHandle; }

    int compareData(osg::Uniform const& rhs) const override;

    // Sends the handle to the program current in `state`, if that program
    // has the uniform and the handle is not 0. False when nothing was sent.
    bool applyHandle(osg::State& state) const;

    // Sends every handle uniform in effect to the current program: those of
    // the state sets pushed on `state` and those of `applied`, the state set
    // that state.apply() took last (its uniforms are not kept in the state).
    // One test and nothing more while no handle has ever been made, which is
    // the case on every driver without bindless textures.
    static void applyCurrent(osg::State& state, osg::StateSet const* applied);

protected:
    ~KVBindlessHandleUniform() override;

private:
    GLuint64 mHandle = 0;
};

} // namespace Kelvor
