#pragma once

#include <string>

namespace Kelvor {

// What the driver says about itself: the questions the capability check
// asks, behind an interface so that the check's decisions can be tried
// against drivers other than the one at hand.
class KVGLDriverQuery
{
public:
    virtual ~KVGLDriverQuery() = default;

    // GL_VERSION and GL_RENDERER as the driver spells them; empty when
    // there is no answer (no current context).
    virtual std::string getVersion() const = 0;
    virtual std::string getRenderer() const = 0;
    virtual bool isExtensionSupported(char const* name) const = 0;
    // Whether an entry point of exactly this name resolves.
    virtual bool hasFunction(char const* name) const = 0;

    // The driver of the context current on this thread (context id 0's
    // extension list).
    static KVGLDriverQuery const& current();
};

} // namespace Kelvor
