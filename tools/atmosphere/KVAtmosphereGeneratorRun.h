#pragma once

#include <osg/Node>

#include <string>

namespace Kelvor {

// Draws a generator graph (createAtmosphereModelGeode) on a window of its
// own without any display: an EGL pbuffer context, made current, every
// drawable of the geode drawn `draws` times, its GL objects released, the
// context closed. False with the reason in `error` when no context could be
// made.
class KVAtmosphereGeneratorRun
{
public:
    static bool draw(osg::Node* geode, int draws, std::string* error = nullptr);
};

} // namespace Kelvor
