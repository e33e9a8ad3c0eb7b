// Linked into every program of the AddressSanitizer build (see the top-level
// CMakeLists.txt). Mesa's DRI driver keeps a few small blocks from its
// globals and is unloaded when the last X connection of the process closes;
// LeakSanitizer then finds the blocks unreachable and reports them (128 to
// 240 bytes per context) with frames in a module that no longer exists, so
// no suppression by library or function name can match them. Loading the
// driver once more with RTLD_NODELETE keeps it mapped to the end: its
// globals are scanned and the blocks are not leaks. Our own leaks are still
// reported. Built only with the sanitizer, never into the product.
#include <dlfcn.h>

namespace {

struct KeepGLDriverLoaded
{
    KeepGLDriverLoaded()
    {
        // The handle is deliberately never closed.
        dlopen(TARNWICK_GL_DRIVER, RTLD_NOW | RTLD_GLOBAL | RTLD_NODELETE);
    }
};

KeepGLDriverLoaded const keepGLDriverLoaded;

} // namespace
