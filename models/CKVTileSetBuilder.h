#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickStream/CKVModelBase.h"

#include <string>

namespace Kelvor {

// Gathers the tiles of a tile set into one model, in the order they are
// added. Each tile is read by an importer of its own, so that no material
// carries over from one tile to the next; a tile that does not load is left
// out and the others still come in.
class CKVTileSetBuilder
{
public:
    CKVTileSetBuilder() = default;

    // False when the tile did not load.
    bool addTile(std::string const& path);
    // The model, or null when no tile loaded. The builder starts afresh.
    kv_shared_ptr<CKVModelBase> takeModel();

private:
    // Made at the first tile that loads.
    kv_shared_ptr<CKVModelBase> mModel;
};

} // namespace Kelvor
