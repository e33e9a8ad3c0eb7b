#include "models/CKVLfpImport.h"

#include "models/CKVTilePath.h"
#include "models/CKVTileSetBuilder.h"

#include "TarnwickCommon/CKVXml.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVLfpImport, CKVModelImportExport)

CKVLfpImport::CKVLfpImport() = default;

CKVLfpImport::~CKVLfpImport() = default;

std::string CKVLfpImport::tilePath(std::string const& folder, char const* value)
{
    if (!value || !*value)
        return std::string();
    std::string relative(value);
    if (relative[0] == '.')
        relative.erase(0, 1);
    if (!relative.empty() && (relative[0] == '\\' || relative[0] == '/'))
        relative.erase(0, 1);
    return CKVTilePath::join(folder, relative);
}

bool CKVLfpImport::readModel(char const* path, kv_shared_ptr<CKVModelBase>& model)
{
    model = nullptr;
    if (!path || !*path)
        return false;
    xml_document document;
    if (!document.load_file(path))
        return false;
    std::string const folder = CKVTilePath::folderOf(path);
    CKVTileSetBuilder builder;
    xml_node const list = document.child("DataDefine").child("NodeList");
    for (xml_node const& node : list.children("Node")) {
        std::string const tile = tilePath(folder, node.child_value());
        if (!tile.empty())
            builder.addTile(tile);
    }
    model = builder.takeModel();
    return model.valid();
}

} // namespace Kelvor
