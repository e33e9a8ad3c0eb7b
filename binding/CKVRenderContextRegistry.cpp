#include "binding/CKVRenderContextRegistry.h"

#include "binding/CKVRenderContextX11Imp.h"

#include "TarnwickRender/CKVRenderCallback.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace Kelvor {

std::vector<CKVRenderContextImp*>* CKVRenderContextRegistry::sContexts = nullptr;

namespace {

// A plain static is constructed by the C++ start-up of this library, which
// may come after the load entry that installs the registry; a function-local
// one exists from its first use on.
std::vector<CKVRenderContextImp*>& storage()
{
    static std::vector<CKVRenderContextImp*> contexts;
    return contexts;
}

void exitHandler()
{
    CKVRenderContextRegistry::teardown();
}

} // namespace

void CKVRenderContextRegistry::install()
{
    if (sContexts)
        return;
    std::vector<CKVRenderContextImp*>& contexts = storage();
    contexts.clear();
    sContexts = &contexts;
    CKVRenderCallback::regCreateRenderContext(&CKVRenderContextRegistry::create);
    CKVRenderCallback::regDestroyRenderContext(&CKVRenderContextRegistry::destroy);
    // Registered by this library, so it also runs when the library is
    // unloaded before the process ends.
    std::atexit(&exitHandler);
}

CKVRenderContextImp* CKVRenderContextRegistry::findById(unsigned int id)
{
    for (CKVRenderContextImp* context : *sContexts) {
        if (context->getId() == id)
            return context;
    }
    return nullptr;
}

CKVRenderContext* CKVRenderContextRegistry::create(int id)
{
    if (!sContexts)
        return nullptr;
    if (findById(static_cast<unsigned int>(id)))
        return nullptr;

    CKVRenderContextImp* context = new (std::nothrow) CKVRenderContextX11Imp;
    if (!context)
        return nullptr;
    // The counter may wrap onto a context still alive; the new one then
    // works but stays unlisted, so the destroy factory refuses it.
    if (!findById(context->getId()))
        sContexts->push_back(context);
    return context;
}

bool CKVRenderContextRegistry::destroy(CKVRenderContext*& context)
{
    if (!context || !context->isKindOf(CKVRenderContextImp::desc()) || !sContexts)
        return false;
    auto* imp = static_cast<CKVRenderContextImp*>(context);
    auto const found = std::find(sContexts->begin(), sContexts->end(), imp);
    if (found == sContexts->end())
        return false;

    sContexts->erase(found);
    delete imp;
    context = nullptr;
    return true;
}

void CKVRenderContextRegistry::teardown()
{
    if (!sContexts)
        return;
    std::vector<CKVRenderContextImp*> contexts;
    contexts.swap(*sContexts);
    for (CKVRenderContextImp* context : contexts)
        delete context;
    CKVRenderCallback::unregCreateRenderContext();
    CKVRenderCallback::unregDestroyRenderContext();
    sContexts->shrink_to_fit();
    sContexts = nullptr;
}

unsigned int CKVRenderContextRegistry::size()
{
    return sContexts ? static_cast<unsigned int>(sContexts->size()) : 0u;
}

bool CKVRenderContextRegistry::contains(CKVRenderContext const* context)
{
    if (!sContexts || !context)
        return false;
    return std::find(sContexts->begin(), sContexts->end(), context) != sContexts->end();
}

} // namespace Kelvor
