#pragma once

#include <cstddef>

namespace Kelvor {

// The GLSL texts built into the library from programs/shaders/*.glsl, looked
// up by file name without the ".glsl" suffix ("surface.frag").
class KVShaderSource
{
public:
    // The text, or null for a name that was not built in.
    static char const* get(char const* name);

    static std::size_t count() { return sEntryCount; }
    // The name of entry `index` in name order, or null past the end.
    static char const* nameAt(std::size_t index);

private:
    struct Entry
    {
        char const* name;
        char const* text;
    };
    // Defined in the source generated at build time.
    static Entry const sEntries[];
    static std::size_t const sEntryCount;
};

} // namespace Kelvor
