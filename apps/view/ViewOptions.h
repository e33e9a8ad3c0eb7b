#pragma once

#include <array>
#include <string>

namespace Kelvor {

// What the command line asked the viewer for. Defaults describe a plain
// interactive session on the default model.
struct ViewOptions
{
    // The default is the atmosphere's sky; kGrey the plain grey before it.
    enum class Background { kDefault, kColour, kGradient, kSky, kGrey };

    // Empty: the default model (the FZK-Haus sample when installed).
    std::string modelPath;
    // The built-in building even when the sample is installed.
    bool builtIn = false;
    // Non-empty: render one picture into this file and exit.
    std::string capturePath;
    int width = 1024;
    int height = 768;

    // A named view ("iso", "front", ...), or an explicit eye and target.
    std::string viewName = "iso";
    bool hasCamera = false;
    std::array<double, 3> eye{};
    std::array<double, 3> target{};

    // -1 leaves the render configuration's own style.
    int style = -1;
    Background background = Background::kDefault;
    std::array<double, 3> backgroundColour{};
    bool fog = false;
    // Hours from 0 to 24 for the sun's position; negative: noon.
    double timeOfDay = -1.0;
    // Shadows are on unless --no-shadows turns them off.
    bool shadows = true;
    // Ambient occlusion is on unless --no-ssao turns it off.
    bool ambientOcclusion = true;
    // Instance culling (depth pre-pass and GPU culling) is on unless
    // --no-culling turns it off.
    bool culling = true;
    bool help = false;
    bool version = false;
};

} // namespace Kelvor
