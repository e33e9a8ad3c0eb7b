#pragma once

#include <string>
#include <vector>

namespace Kelvor {

// The atmosphere's GLSL chunks (programs/shaders), in the order a program
// concatenates them.
struct KVAtmosphereShaders
{
    // What the sky and surface programs read the tables with, behind their
    // version and bindless extension lines: GetSkyRadiance,
    // GetSkyRadianceToPoint, GetSunAndSkyIrradiance, GetSolarRadiance.
    static std::vector<std::string> lookupLibrary()
    {
        return {"atmosphere_definitions", "atmosphere_lookup_parameters", "atmosphere_helpers",
                "atmosphere_transmittance", "atmosphere_scattering", "atmosphere_irradiance", "atmosphere_sky"};
    }

    // The model as the table generator's passes compute it, before their main.
    static std::vector<std::string> modelLibrary()
    {
        return {"atmosphere_definitions", "atmosphere_model_parameters", "atmosphere_helpers",
                "atmosphere_transmittance", "atmosphere_scattering", "atmosphere_irradiance"};
    }
};

} // namespace Kelvor
