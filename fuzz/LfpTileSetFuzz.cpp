// The tile-set list reader on arbitrary bytes, written as an .lfp file
// beside one real tile, so that inputs that name it reach the tile import.
#include "FuzzScratch.h"
#include "FuzzTile.h"

#include "models/CKVLfpImport.h"

#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Kelvor::FuzzTile::write(Kelvor::FuzzScratch::folder() + "/Tile_0/Tile_0.osgb");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const path = Kelvor::FuzzScratch::write("fuzz.lfp", data, size);
    Kelvor::kv_shared_ptr<Kelvor::CKVModelBase> model;
    Kelvor::CKVLfpImport().readModel(path.c_str(), model);
    return 0;
}
