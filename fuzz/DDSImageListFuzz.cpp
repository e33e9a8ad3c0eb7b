// The DDS image-list reader on arbitrary bytes: every header is checked
// against the bytes behind it, and every image it returns holds the bytes
// its size and mipmap chain claim.
#include "environment/CKVDDSImageListReader.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Kelvor::CKVDDSImageListReader::ImageList faces;
    std::string error;
    if (!Kelvor::CKVDDSImageListReader::readFaces(data, size, "fuzz.dds", faces, &error))
        return 0;
    for (auto const& face : faces) {
        // Touch the last byte the image claims: ASan catches a short buffer.
        unsigned int const bytes = face->getTotalSizeInBytesIncludingMipmaps();
        if (bytes == 0 || bytes > size)
            std::abort();
        volatile unsigned char last = face->data()[bytes - 1];
        (void)last;
    }
    return 0;
}
