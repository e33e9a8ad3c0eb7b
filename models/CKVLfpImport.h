#pragma once

#include "TarnwickStream/CKVModelImportExport.h"

#include <string>

namespace Kelvor {

// Imports a tile set listed by an .lfp file: an XML document whose
// DataDefine/NodeList/Node elements each hold the path of one root tile,
// relative to the folder of the .lfp file.
class CKVLfpImport : public CKVModelImportExport
{
    KV_DECLARE_RUNTIME_CLASS(CKVLfpImport)
public:
    CKVLfpImport();
    ~CKVLfpImport() override;

    // One LOD tree per listed tile that loads, in list order. False and a
    // null model when the file is no XML or no tile loads.
    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) override;

    // The path of a Node value under `folder`; "" for a value that names
    // nothing. A leading "." and then a leading separator are dropped, so
    // ".\\a\\a.osgb", "a\\a.osgb" and "/a\\a.osgb" all name the same file.
    static std::string tilePath(std::string const& folder, char const* value);
};

} // namespace Kelvor
