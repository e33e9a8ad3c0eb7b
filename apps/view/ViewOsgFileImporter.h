#pragma once

#include "TarnwickStream/CKVModelImportExport.h"

#include <string>
#include <vector>

namespace Kelvor {

// Reads any model file that OpenSceneGraph's reader-writers know (obj, 3ds,
// dae, osgt, ive, ...) into the host's model form: one level holding one
// triangle mesh per geometry, in world coordinates, with the geometry's
// diffuse colour and the image file of its texture. The viewer registers it with the model registry for the
// extensions no other importer has claimed.
class ViewOsgFileImporter : public CKVModelImportExport
{
public:
    ViewOsgFileImporter();
    ~ViewOsgFileImporter() override;

    bool readModel(char const* path, kv_shared_ptr<CKVModelBase>& model) override;

    // Extensions it is registered under (without dot).
    static std::vector<std::string> extensions();
};

} // namespace Kelvor
