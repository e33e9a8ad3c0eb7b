#pragma once

namespace osg {
class State;
}

namespace Kelvor {

// Corrections to OpenSceneGraph's picture of the driver. OpenSceneGraph
// takes an extension as present when its entry point resolves, but some
// drivers (Mesa) resolve every name; a wrong guess can break every
// multisampled render target. Apply once per context while it is current.
class CKVGLQuirks
{
public:
    static void apply(osg::State& state);
};

} // namespace Kelvor
