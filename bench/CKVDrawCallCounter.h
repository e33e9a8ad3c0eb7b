#pragma once

#include <cstdint>

namespace Kelvor {

// Counts the GL draw calls of the process. The program that links this
// class exports its own definitions of the draw entry points (it is built
// with exported symbols), which come before the GL library's in the lookup
// order: calls bound at load time, and pointers that OpenSceneGraph looks up
// by name with dlsym, both land here, are counted and go on to the driver.
// glXGetProcAddress is answered the same way for the same names.
class CKVDrawCallCounter
{
public:
    struct Counts
    {
        std::uint64_t calls = 0;         // every draw entry point and display list call
        std::uint64_t multiDraws = 0;    // glMultiDraw*Indirect
        std::uint64_t subDraws = 0;      // draws those multi-draws stand for
        std::uint64_t instancedDraws = 0;
    };

    static Counts counts();
    static void reset();
    // Counts since `before`.
    static Counts since(Counts const& before);

    // The address a name resolves to in this process's global lookup: the
    // counting wrapper for the draw entry points. For checks of the wiring.
    static void* resolve(char const* name);
    // Whether a counted call of `name` goes on to a GL library.
    static bool forwards(char const* name);
};

} // namespace Kelvor
