#include "TarnwickStream/CKVModelImportExport.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVModelImportExport, CKVSharedObject)

CKVModelImportExport::CKVModelImportExport() = default;

CKVModelImportExport::~CKVModelImportExport() = default;

bool CKVModelImportExport::writeModel(CKVModelBase const&, char const*)
{
    return false;
}

} // namespace Kelvor
