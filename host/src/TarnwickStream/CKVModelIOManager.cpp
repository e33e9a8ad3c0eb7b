#include "TarnwickStream/CKVModelIOManager.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace Kelvor {

namespace {

std::string lowerCase(char const* text)
{
    std::string s(text);
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

} // namespace

// Leaked on purpose: importers registered by a backend are removed when it
// unloads, which may happen after static destruction has begun.
CKVModelIOManager* CKVModelIOManager::instance()
{
    static CKVModelIOManager* manager = new CKVModelIOManager;
    return manager;
}

CKVModelIOManager::CKVModelIOManager() = default;

CKVModelIOManager::~CKVModelIOManager() = default;

bool CKVModelIOManager::addImportExport(char const* extension, CKVModelImportExport const* importer)
{
    if (!extension || !*extension || !importer)
        return false;
    // Registered objects are used, not changed, by the manager; reading a
    // model is the importer's own business and may use its working state.
    kv_shared_ptr<CKVModelImportExport> held(const_cast<CKVModelImportExport*>(importer));
    kv_shared_ptr<CKVModelImportExport> replaced;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        kv_shared_ptr<CKVModelImportExport>& slot = mImporters[lowerCase(extension)];
        replaced = slot;
        slot = held;
    }
    // `replaced` may hold the last reference; it goes outside the lock, so an
    // importer's destructor may use the manager.
    return true;
}

bool CKVModelIOManager::removeImportExport(char const* extension)
{
    if (!extension)
        return false;
    kv_shared_ptr<CKVModelImportExport> removed;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        auto it = mImporters.find(lowerCase(extension));
        if (it == mImporters.end())
            return false;
        removed = it->second;
        mImporters.erase(it);
    }
    return true;
}

kv_shared_ptr<CKVModelImportExport> CKVModelIOManager::findImportExport(char const* extension) const
{
    if (!extension)
        return nullptr;
    std::lock_guard<std::mutex> lock(mMutex);
    auto it = mImporters.find(lowerCase(extension));
    return it == mImporters.end() ? nullptr : it->second;
}

kv_shared_ptr<CKVModelImportExport> CKVModelIOManager::findByPath(char const* path) const
{
    if (!path)
        return nullptr;
    char const* dot = std::strrchr(path, '.');
    // A dot in a folder name is no extension.
    if (!dot || std::strpbrk(dot, "/\\"))
        return nullptr;
    kv_shared_ptr<CKVModelImportExport> found = findImportExport(dot);
    return found ? found : findImportExport(dot + 1);
}

bool CKVModelIOManager::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) const
{
    kv_shared_ptr<CKVModelImportExport> importer = findByPath(path);
    return importer && importer->readModel(path, model);
}

std::vector<std::string> CKVModelIOManager::getExtensions() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> keys;
    keys.reserve(mImporters.size());
    for (auto const& entry : mImporters)
        keys.push_back(entry.first);
    return keys;
}

} // namespace Kelvor
