#include "models/CKVTileSetBuilder.h"

#include "models/CKVOSGBImport.h"

#include <utility>

namespace Kelvor {

bool CKVTileSetBuilder::addTile(std::string const& path)
{
    CKVOSGBImport importer;
    kv_shared_ptr<CKVRenderLOD> lod = importer.loadTile(path.c_str());
    if (!lod)
        return false;
    if (!mModel)
        mModel = new CKVModelBase;
    return mModel->addLOD(lod.get());
}

kv_shared_ptr<CKVModelBase> CKVTileSetBuilder::takeModel()
{
    return std::move(mModel);
}

} // namespace Kelvor
