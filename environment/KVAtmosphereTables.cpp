#include "environment/KVAtmosphereTables.h"

#include <TarnwickCommon/Common.h>

#include <osg/Notify>

#include <cstdio>
#include <memory>

namespace Kelvor {

char const* const KVAtmosphereTables::kFolder = "/skybox";
char const* const KVAtmosphereTables::kTransmittanceFile = "/transmittance_texture.data";
char const* const KVAtmosphereTables::kScatteringFile = "/scattering_texture.data";
char const* const KVAtmosphereTables::kIrradianceFile = "/irradiance_texture.data";

unsigned char* KVAtmosphereTables::read(char const* path, std::size_t expectedBytes)
{
    if (!path || !Common::checkFile(path))
    {
        OSG_WARN << "Atmosphere table " << (path ? path : "(null)") << " is missing; expected " << expectedBytes
                 << " bytes. The sky stays black." << std::endl;
        return nullptr;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), &std::fclose);
    if (!file)
    {
        OSG_WARN << "Atmosphere table " << path << " cannot be opened; expected " << expectedBytes << " bytes."
                 << std::endl;
        return nullptr;
    }
    long size = -1;
    if (std::fseek(file.get(), 0, SEEK_END) == 0)
        size = std::ftell(file.get());
    if (size < 0 || static_cast<std::size_t>(size) != expectedBytes)
    {
        OSG_WARN << "Atmosphere table " << path << " has " << size << " bytes; expected " << expectedBytes
                 << ". The table stays empty." << std::endl;
        return nullptr;
    }
    std::rewind(file.get());
    std::unique_ptr<unsigned char[]> block(new unsigned char[expectedBytes]);
    if (std::fread(block.get(), 1, expectedBytes, file.get()) != expectedBytes)
    {
        OSG_WARN << "Atmosphere table " << path << " could not be read whole; expected " << expectedBytes
                 << " bytes." << std::endl;
        return nullptr;
    }
    return block.release();
}

} // namespace Kelvor
