#include "scene/KVBindlessHandleUniform.h"

#include <osg/GLExtensions>
#include <osg/Program>
#include <osg/State>
#include <osg/StateSet>

#include <atomic>

namespace Kelvor {

namespace {

// How many handles were ever stored in any uniform of this class. While 0
// (always, on drivers without bindless textures) a draw pays one load.
std::atomic<unsigned int> sHandlesSet{0};

KVBindlessHandleUniform const* asHandleUniform(osg::Uniform const* uniform)
{
    // The stock type test first: it rules out nearly every uniform cheaply.
    if (!uniform || uniform->getType() != osg::Uniform::UNDEFINED)
        return nullptr;
    return dynamic_cast<KVBindlessHandleUniform const*>(uniform);
}

} // namespace

KVBindlessHandleUniform::KVBindlessHandleUniform() = default;

KVBindlessHandleUniform::KVBindlessHandleUniform(char const* name, unsigned long long handle, bool bindless)
{
    // The stock uniform stays without type and elements, which makes its own
    // draw-time path send nothing for this one.
    setName(name ? name : "");
    set(handle, bindless);
}

KVBindlessHandleUniform::KVBindlessHandleUniform(KVBindlessHandleUniform const& other, osg::CopyOp const& copyop)
    : osg::Uniform(other, copyop)
    , mHandle(other.mHandle)
{
}

KVBindlessHandleUniform::~KVBindlessHandleUniform() = default;

bool KVBindlessHandleUniform::set(unsigned long long handle, bool /*bindless*/)
{
    if (handle != 0 && mHandle != handle)
        sHandlesSet.fetch_add(1, std::memory_order_relaxed);
    mHandle = handle;
    dirty();
    return true;
}

bool KVBindlessHandleUniform::get(unsigned long long& handle) const
{
    handle = mHandle;
    return true;
}

int KVBindlessHandleUniform::compareData(osg::Uniform const& rhs) const
{
    auto const* other = dynamic_cast<KVBindlessHandleUniform const*>(&rhs);
    if (!other)
        return 1;
    if (mHandle < other->mHandle)
        return -1;
    return mHandle > other->mHandle ? 1 : 0;
}

bool KVBindlessHandleUniform::applyHandle(osg::State& state) const
{
    if (mHandle == 0)
        return false;
    osg::Program::PerContextProgram const* program = state.getLastAppliedProgramObject();
    if (!program)
        return false;
    GLint const location = program->getUniformLocation(getNameID());
    if (location < 0)
        return false;
    osg::GLExtensions const* ext = state.get<osg::GLExtensions>();
    if (!ext || !ext->glUniformHandleui64)
        return false;
    ext->glUniformHandleui64(location, mHandle);
    return true;
}

void KVBindlessHandleUniform::applyCurrent(osg::State& state, osg::StateSet const* applied)
{
    if (sHandlesSet.load(std::memory_order_relaxed) == 0)
        return;
    // Sent on every draw, not only on change: which uniform of a name a
    // program last received is tracked by the stock path alone, and a
    // handle is one cheap call.
    osg::State::UniformMap const& pushed = state.getUniformMap();
    for (auto const& named : pushed) {
        auto const& stack = named.second.uniformVec;
        if (stack.empty())
            continue;
        if (auto const* handle = asHandleUniform(stack.back().first))
            handle->applyHandle(state);
    }
    if (!applied)
        return;
    for (auto const& named : applied->getUniformList()) {
        auto const* handle = asHandleUniform(named.second.first.get());
        if (!handle)
            continue;
        // A pushed uniform marked OVERRIDE wins over the applied set's,
        // unless that one is PROTECTED, as in the stock path.
        auto const found = pushed.find(named.first);
        if (found != pushed.end() && !found->second.uniformVec.empty() &&
            (found->second.uniformVec.back().second & osg::StateAttribute::OVERRIDE) &&
            !(named.second.second & osg::StateAttribute::PROTECTED))
            continue;
        handle->applyHandle(state);
    }
}

} // namespace Kelvor
