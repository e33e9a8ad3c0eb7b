#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickStream/CKVModelBase.h"

namespace Kelvor {

// Reads (and possibly writes) one model format. Registered with
// CKVModelIOManager under the file extensions it handles.
class CKVModelImportExport : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVModelImportExport)
public:
    ~CKVModelImportExport() override;

    // Reads the file at `path`. On success `model` holds the new model and
    // the result is true; otherwise `model` is left null. Not const: an
    // importer may keep working state between the steps of one import.
    virtual bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) = 0;
    // Writes `model` to `path`. The base writes nothing and returns false,
    // for formats that are read only.
    virtual bool writeModel(CKVModelBase const& model, char const* path);

protected:
    CKVModelImportExport();
};

} // namespace Kelvor
