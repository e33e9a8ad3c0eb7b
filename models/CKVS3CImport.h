#pragma once

#include "TarnwickStream/CKVModelImportExport.h"

namespace Kelvor {

// Imports a tile set described by an .s3c file. The descriptor itself is
// never read: the tiles are the folders of "Data" beside it, each holding a
// root tile of its own name, <folder>/Data/<tile>/<tile>.osgb.
class CKVS3CImport : public CKVModelImportExport
{
    KV_DECLARE_RUNTIME_CLASS(CKVS3CImport)
public:
    CKVS3CImport();
    ~CKVS3CImport() override;

    // One LOD tree per tile that loads, in sorted folder order. Names with a
    // "." are not tile folders. False and a null model when no tile loads.
    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) override;
};

} // namespace Kelvor
