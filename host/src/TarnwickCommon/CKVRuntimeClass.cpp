#include "TarnwickCommon/CKVRuntimeClass.h"

#include "TarnwickCommon/CKVObject.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace Kelvor {

namespace {

struct RecordTable
{
    std::mutex mutex;
    std::map<std::string, CKVRuntimeClass const*> byName;
};

// Leaked on purpose: records are destroyed at exit in an order we do not
// control, and each must still be able to remove itself.
RecordTable& table()
{
    static RecordTable* t = new RecordTable;
    return *t;
}

} // namespace

CKVRuntimeClass::CKVRuntimeClass(char const* name, CKVRuntimeClass const* base, CreateFunction create)
    : mName(name), mBase(base), mCreate(create)
{
    RecordTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.byName[name] = this;
}

CKVRuntimeClass::~CKVRuntimeClass()
{
    RecordTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    auto it = t.byName.find(mName);
    if (it != t.byName.end() && it->second == this)
        t.byName.erase(it);
}

CKVObject* CKVRuntimeClass::createObject() const
{
    return mCreate ? mCreate() : nullptr;
}

bool CKVRuntimeClass::isDerivedFrom(CKVRuntimeClass const* other) const
{
    if (!other)
        return false;
    for (CKVRuntimeClass const* r = this; r; r = r->mBase) {
        if (r == other)
            return true;
    }
    return false;
}

CKVRuntimeClass const* CKVRuntimeClass::find(char const* name)
{
    if (!name)
        return nullptr;
    RecordTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    auto it = t.byName.find(name);
    return it == t.byName.end() ? nullptr : it->second;
}

} // namespace Kelvor
