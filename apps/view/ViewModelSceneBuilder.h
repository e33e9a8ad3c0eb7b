#pragma once

#include "apps/view/ViewContent.h"
#include "TarnwickStream/CKVModelBase.h"

#include <string>

namespace Kelvor {

// Turns an imported model (levels of shapes with materials, as the model
// registry's importers give it) into host scene content: one node per
// level, with the level's range as a culling state, and under it one node
// per shape in the shape's material. Shapes are tessellated through the
// host's graphics interface, so the backend's own buffers are made.
class ViewModelSceneBuilder
{
public:
    // False with getError() set when nothing drawable came out of the model
    // or the backend's factories are missing.
    bool build(CKVModelBase const& model, ViewContent& content);
    std::string const& getError() const { return mError; }

private:
    kv_shared_ptr<CKVSceneNode> buildLevel(CKVRenderLOD const& level, unsigned int depth, ViewContent& content);

    std::string mError;
    kv_shared_ptr<CKVBasicMaterial> mDefaultMaterial;
};

} // namespace Kelvor
