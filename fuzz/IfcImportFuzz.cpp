// The viewer's IFC import on arbitrary bytes: the IFC library parses, our
// code evaluates geometry, matches shapes and builds the host scene.
#include "FuzzScratch.h"

#include "apps/ifc/IfcImporter.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const path = Kelvor::FuzzScratch::write("fuzz.ifc", data, size);
    Kelvor::IfcScene scene;
    Kelvor::IfcImporter().import(path, scene);
    return 0;
}
