#pragma once

#include <vector>

namespace Kelvor {

class CKVRenderContext;
class CKVRenderContextImp;

// The process-wide list of render contexts that the host created through
// CKVRenderCallback. It owns them: the destroy factory and the exit handler
// are the only places a context is deleted. Not locked: the host must not
// create or destroy contexts from two threads at once.
class CKVRenderContextRegistry
{
public:
    CKVRenderContextRegistry() = delete;

    // Sets up the list, registers the two render-context factories and
    // installs the exit handler that tears the list down again.
    static void install();

    // The create factory. Null when the list is gone or a listed context
    // already has `id`; otherwise a new context, listed unless its own id
    // (from the context counter, not `id`) is taken already.
    static CKVRenderContext* create(int id);
    // The destroy factory. False for null, for a foreign object, when the
    // list is gone and for a context that is not listed; otherwise deletes
    // it and clears `context`.
    static bool destroy(CKVRenderContext*& context);

    // Deletes every listed context, removes the two factories and frees the
    // list. Runs at process exit, and when the library is unloaded.
    static void teardown();

    static bool isInstalled() { return sContexts != nullptr; }
    static unsigned int size();
    static bool contains(CKVRenderContext const* context);

private:
    static CKVRenderContextImp* findById(unsigned int id);

    static std::vector<CKVRenderContextImp*>* sContexts;
};

} // namespace Kelvor
