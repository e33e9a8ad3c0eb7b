#include "bench/CKVDrawCallCounter.h"

#include <atomic>
#include <cstring>
#include <dlfcn.h>

namespace Kelvor {

namespace {

std::atomic<std::uint64_t> gCalls{0};
std::atomic<std::uint64_t> gMultiDraws{0};
std::atomic<std::uint64_t> gSubDraws{0};
std::atomic<std::uint64_t> gInstanced{0};

void count(std::uint64_t draws, bool multi = false, bool instanced = false)
{
    gCalls.fetch_add(1, std::memory_order_relaxed);
    gSubDraws.fetch_add(draws, std::memory_order_relaxed);
    if (multi)
        gMultiDraws.fetch_add(1, std::memory_order_relaxed);
    if (instanced)
        gInstanced.fetch_add(1, std::memory_order_relaxed);
}

// The next definition after ours in the lookup order: the GL library's.
template <typename Function>
Function nextDefinition(char const* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

CKVDrawCallCounter::Counts CKVDrawCallCounter::counts()
{
    Counts c;
    c.calls = gCalls.load(std::memory_order_relaxed);
    c.multiDraws = gMultiDraws.load(std::memory_order_relaxed);
    c.subDraws = gSubDraws.load(std::memory_order_relaxed);
    c.instancedDraws = gInstanced.load(std::memory_order_relaxed);
    return c;
}

void CKVDrawCallCounter::reset()
{
    gCalls = 0;
    gMultiDraws = 0;
    gSubDraws = 0;
    gInstanced = 0;
}

CKVDrawCallCounter::Counts CKVDrawCallCounter::since(Counts const& before)
{
    Counts now = counts();
    now.calls -= before.calls;
    now.multiDraws -= before.multiDraws;
    now.subDraws -= before.subDraws;
    now.instancedDraws -= before.instancedDraws;
    return now;
}

void* CKVDrawCallCounter::resolve(char const* name)
{
    return dlsym(RTLD_DEFAULT, name);
}

bool CKVDrawCallCounter::forwards(char const* name)
{
    return dlsym(RTLD_NEXT, name) != nullptr;
}

} // namespace Kelvor

// GL types spelled out, so that these definitions need no GL header whose
// prototypes they would have to match letter for letter.
using KVenum = unsigned int;
using KVint = int;
using KVuint = unsigned int;
using KVsizei = int;

#define KV_FORWARD(name, params, args)                                                                         \
    using name##_t = void (*) params;                                                                          \
    static name##_t const real = Kelvor::nextDefinition<name##_t>(#name);                                      \
    if (real)                                                                                                  \
        real args

extern "C" {

__attribute__((visibility("default"))) void glDrawArrays(KVenum mode, KVint first, KVsizei n)
{
    Kelvor::count(1);
    KV_FORWARD(glDrawArrays, (KVenum, KVint, KVsizei), (mode, first, n));
}

__attribute__((visibility("default"))) void glDrawElements(KVenum mode, KVsizei n, KVenum type, void const* indices)
{
    Kelvor::count(1);
    KV_FORWARD(glDrawElements, (KVenum, KVsizei, KVenum, void const*), (mode, n, type, indices));
}

__attribute__((visibility("default"))) void glDrawRangeElements(KVenum mode, KVuint lo, KVuint hi, KVsizei n,
                                                                 KVenum type, void const* indices)
{
    Kelvor::count(1);
    KV_FORWARD(glDrawRangeElements, (KVenum, KVuint, KVuint, KVsizei, KVenum, void const*),
               (mode, lo, hi, n, type, indices));
}

__attribute__((visibility("default"))) void glDrawArraysInstanced(KVenum mode, KVint first, KVsizei n,
                                                                   KVsizei instances)
{
    Kelvor::count(1, false, true);
    KV_FORWARD(glDrawArraysInstanced, (KVenum, KVint, KVsizei, KVsizei), (mode, first, n, instances));
}

__attribute__((visibility("default"))) void glDrawElementsInstanced(KVenum mode, KVsizei n, KVenum type,
                                                                     void const* indices, KVsizei instances)
{
    Kelvor::count(1, false, true);
    KV_FORWARD(glDrawElementsInstanced, (KVenum, KVsizei, KVenum, void const*, KVsizei),
               (mode, n, type, indices, instances));
}

__attribute__((visibility("default"))) void glDrawElementsBaseVertex(KVenum mode, KVsizei n, KVenum type,
                                                                      void const* indices, KVint base)
{
    Kelvor::count(1);
    KV_FORWARD(glDrawElementsBaseVertex, (KVenum, KVsizei, KVenum, void const*, KVint),
               (mode, n, type, indices, base));
}

__attribute__((visibility("default"))) void glDrawArraysIndirect(KVenum mode, void const* indirect)
{
    Kelvor::count(1, false, true);
    KV_FORWARD(glDrawArraysIndirect, (KVenum, void const*), (mode, indirect));
}

__attribute__((visibility("default"))) void glDrawElementsIndirect(KVenum mode, KVenum type, void const* indirect)
{
    Kelvor::count(1, false, true);
    KV_FORWARD(glDrawElementsIndirect, (KVenum, KVenum, void const*), (mode, type, indirect));
}

__attribute__((visibility("default"))) void glMultiDrawArrays(KVenum mode, KVint const* first, KVsizei const* n,
                                                               KVsizei draws)
{
    Kelvor::count(draws > 0 ? unsigned(draws) : 0u, true);
    KV_FORWARD(glMultiDrawArrays, (KVenum, KVint const*, KVsizei const*, KVsizei), (mode, first, n, draws));
}

__attribute__((visibility("default"))) void glMultiDrawElements(KVenum mode, KVsizei const* n, KVenum type,
                                                                 void const* const* indices, KVsizei draws)
{
    Kelvor::count(draws > 0 ? unsigned(draws) : 0u, true);
    KV_FORWARD(glMultiDrawElements, (KVenum, KVsizei const*, KVenum, void const* const*, KVsizei),
               (mode, n, type, indices, draws));
}

__attribute__((visibility("default"))) void glMultiDrawArraysIndirect(KVenum mode, void const* indirect,
                                                                       KVsizei draws, KVsizei stride)
{
    Kelvor::count(draws > 0 ? unsigned(draws) : 0u, true, true);
    KV_FORWARD(glMultiDrawArraysIndirect, (KVenum, void const*, KVsizei, KVsizei), (mode, indirect, draws, stride));
}

__attribute__((visibility("default"))) void glMultiDrawElementsIndirect(KVenum mode, KVenum type,
                                                                         void const* indirect, KVsizei draws,
                                                                         KVsizei stride)
{
    Kelvor::count(draws > 0 ? unsigned(draws) : 0u, true, true);
    KV_FORWARD(glMultiDrawElementsIndirect, (KVenum, KVenum, void const*, KVsizei, KVsizei),
               (mode, type, indirect, draws, stride));
}

// Display lists, which a plain OpenSceneGraph geometry uses by default:
// each call replays the draws that were compiled into the list.
__attribute__((visibility("default"))) void glCallList(KVuint list)
{
    Kelvor::count(1);
    KV_FORWARD(glCallList, (KVuint), (list));
}

__attribute__((visibility("default"))) void glCallLists(KVsizei n, KVenum type, void const* lists)
{
    Kelvor::count(n > 0 ? unsigned(n) : 0u, true);
    KV_FORWARD(glCallLists, (KVsizei, KVenum, void const*), (n, type, lists));
}

using KVProc = void (*)();

// Names looked up through GLX get the same wrappers as names looked up with
// dlsym.
static KVProc lookUpWrapper(char const* name)
{
    struct Entry
    {
        char const* name;
        KVProc proc;
    };
    static Entry const entries[] = {
        {"glDrawArrays", reinterpret_cast<KVProc>(&glDrawArrays)},
        {"glDrawElements", reinterpret_cast<KVProc>(&glDrawElements)},
        {"glDrawRangeElements", reinterpret_cast<KVProc>(&glDrawRangeElements)},
        {"glDrawArraysInstanced", reinterpret_cast<KVProc>(&glDrawArraysInstanced)},
        {"glDrawElementsInstanced", reinterpret_cast<KVProc>(&glDrawElementsInstanced)},
        {"glDrawElementsBaseVertex", reinterpret_cast<KVProc>(&glDrawElementsBaseVertex)},
        {"glDrawArraysIndirect", reinterpret_cast<KVProc>(&glDrawArraysIndirect)},
        {"glDrawElementsIndirect", reinterpret_cast<KVProc>(&glDrawElementsIndirect)},
        {"glMultiDrawArrays", reinterpret_cast<KVProc>(&glMultiDrawArrays)},
        {"glMultiDrawElements", reinterpret_cast<KVProc>(&glMultiDrawElements)},
        {"glMultiDrawArraysIndirect", reinterpret_cast<KVProc>(&glMultiDrawArraysIndirect)},
        {"glMultiDrawElementsIndirect", reinterpret_cast<KVProc>(&glMultiDrawElementsIndirect)},
        {"glCallList", reinterpret_cast<KVProc>(&glCallList)},
        {"glCallLists", reinterpret_cast<KVProc>(&glCallLists)},
    };
    for (Entry const& entry : entries)
        if (std::strcmp(entry.name, name) == 0)
            return entry.proc;
    return nullptr;
}

__attribute__((visibility("default"))) KVProc glXGetProcAddressARB(unsigned char const* name)
{
    if (KVProc wrapper = lookUpWrapper(reinterpret_cast<char const*>(name)))
        return wrapper;
    using Lookup = KVProc (*)(unsigned char const*);
    static Lookup const real = Kelvor::nextDefinition<Lookup>("glXGetProcAddressARB");
    return real ? real(name) : nullptr;
}

__attribute__((visibility("default"))) KVProc glXGetProcAddress(unsigned char const* name)
{
    return glXGetProcAddressARB(name);
}

} // extern "C"
