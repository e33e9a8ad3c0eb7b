// The FBX reader on arbitrary bytes, through the registry as the backend
// reads animation resources: assimp parses, our builders make the skinned
// graph and the clips.
#include "FuzzScratch.h"

#include "fbx/ReaderWriterFBX.h"

#include <osg/ref_ptr>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const path = Kelvor::FuzzScratch::write("fuzz.fbx", data, size);
    osg::ref_ptr<Kelvor::ReaderWriterFBX> reader = new Kelvor::ReaderWriterFBX;
    reader->readNode(path, nullptr);
    return 0;
}
