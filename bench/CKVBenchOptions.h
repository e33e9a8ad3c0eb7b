#pragma once

#include <cstdint>
#include <string>

namespace Kelvor {

// What one run of the benchmark program measures, from its command line:
//   --path=host|stock|commands|pick-host|pick-stock --objects=N --frames=F
//   --warmup=W --width=640 --height=360 --seed=S --meshes=M --shadows=L
//   --ssao=L --picks=P --verify=V --callgrind
//   --culling=0|1|2 --scene=campus|occlusion --visible=0|1 --turn=T
struct CKVBenchOptions
{
    std::string path = "host";
    std::size_t objects = 1000;
    unsigned int frames = 100;
    unsigned int warmup = 5;
    int width = 640;
    int height = 360;
    std::uint64_t seed = 1;
    unsigned int meshes = 32;
    // A shadow level (0 to 3) draws the backend's model lit, every element
    // a caster, with shadows at that level; -1 (the default) keeps the
    // unlit flat colour of the plain comparison.
    int shadows = -1;
    // An ambient occlusion level (0 to 3) draws the model lit, as a shadow
    // level does (with shadows off unless --shadows asks for them), with
    // every element in the occlusion pass; -1 leaves it off.
    int ssao = -1;
    // Pick paths: point picks and rectangle selections each, and how many
    // of them are repeated without the instance search to check the
    // answers.
    unsigned int picks = 100;
    unsigned int verify = 0;
    // Instance culling of the backend: 0 off, 1 the culling pass alone
    // (frustum and size), 2 depth pre-pass and culling (frustum, size and
    // depth chain).
    int culling = 0;
    // "campus", or "occlusion": the same campus closed in a shell of walls
    // and a roof, so that from outside nearly every instance is hidden.
    std::string scene = "campus";
    // After the host path's frames: count the instances with a pixel on
    // screen in an id render of the last frame's view.
    bool countVisible = false;
    // Frames the camera path takes for one turn; 0: the measured frames.
    unsigned int turnFrames = 0;
    // Instrument exactly one frame for callgrind (run under
    // valgrind --tool=callgrind --instr-atstart=no) and measure no others.
    bool callgrind = false;

    // False, with a message, for an unknown or malformed argument.
    bool parse(int argc, char** argv, std::string& error);
};

} // namespace Kelvor
