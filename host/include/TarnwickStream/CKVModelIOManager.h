#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickStream/CKVModelImportExport.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Kelvor {

// The registry of model importers by file extension. Keys are compared
// without regard to letter case but otherwise as given, so "osgb" and
// ".osgb" are two keys; findByPath tries both forms. The manager holds a
// reference to each importer it keeps. All operations are thread-safe.
class CKVModelIOManager
{
public:
    static CKVModelIOManager* instance();

    // Holds a reference to the importer. Replaces an importer registered
    // under the same key. False for a null or empty key or a null importer.
    bool addImportExport(char const* extension, CKVModelImportExport const* importer);
    // False when nothing was registered under the key.
    bool removeImportExport(char const* extension);

    // The importer under exactly this key (letter case ignored), or null.
    kv_shared_ptr<CKVModelImportExport> findImportExport(char const* extension) const;
    // The importer for a file, by the extension of its name: tried with the
    // dot, then without it.
    kv_shared_ptr<CKVModelImportExport> findByPath(char const* path) const;
    // Reads a file with the importer its extension selects. False when there
    // is none or it fails.
    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) const;

    std::vector<std::string> getExtensions() const;

    CKVModelIOManager(CKVModelIOManager const&) = delete;
    CKVModelIOManager& operator=(CKVModelIOManager const&) = delete;

private:
    CKVModelIOManager();
    ~CKVModelIOManager();

    mutable std::mutex mMutex;
    std::map<std::string, kv_shared_ptr<CKVModelImportExport>> mImporters;
};

} // namespace Kelvor
