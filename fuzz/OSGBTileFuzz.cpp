// One tile file on arbitrary bytes: OpenSceneGraph reads it, and the
// importer walks whatever graph comes back (levels, groups, geometry,
// materials, embedded textures).
#include "FuzzScratch.h"

#include "models/CKVOSGBImport.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const path = Kelvor::FuzzScratch::write("fuzz.osgb", data, size);
    Kelvor::CKVOSGBImport().loadTile(path.c_str());
    return 0;
}
