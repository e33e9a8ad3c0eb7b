#include "models/CKVS3CImport.h"

#include "models/CKVTilePath.h"
#include "models/CKVTileSetBuilder.h"

#include <string>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVS3CImport, CKVModelImportExport)

CKVS3CImport::CKVS3CImport() = default;

CKVS3CImport::~CKVS3CImport() = default;

bool CKVS3CImport::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model)
{
    model = nullptr;
    if (!path || !*path)
        return false;
    std::string const data = CKVTilePath::join(CKVTilePath::folderOf(path), "Data");
    CKVTileSetBuilder builder;
    for (std::string const& name : CKVTilePath::sortedEntries(data)) {
        if (name.find('.') != std::string::npos)
            continue;
        builder.addTile(CKVTilePath::join(data, name + "/" + name + ".osgb"));
    }
    model = builder.takeModel();
    return model.valid();
}

} // namespace Kelvor
