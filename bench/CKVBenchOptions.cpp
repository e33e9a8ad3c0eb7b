#include "bench/CKVBenchOptions.h"

#include <cstdlib>
#include <cstring>

namespace Kelvor {

namespace {

bool readNumber(char const* text, unsigned long long& out)
{
    char* end = nullptr;
    out = std::strtoull(text, &end, 10);
    return end != text && *end == '\0';
}

} // namespace

bool CKVBenchOptions::parse(int argc, char** argv, std::string& error)
{
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        if (argument == "--callgrind") {
            callgrind = true;
            continue;
        }
        std::size_t const equals = argument.find('=');
        if (argument.rfind("--", 0) != 0 || equals == std::string::npos) {
            error = "unknown argument: " + argument;
            return false;
        }
        std::string const key = argument.substr(2, equals - 2), value = argument.substr(equals + 1);
        if (key == "path") {
            if (value != "host" && value != "stock" && value != "commands" && value != "pick-host" &&
                value != "pick-stock") {
                error = "path must be host, stock, commands, pick-host or pick-stock";
                return false;
            }
            path = value;
            continue;
        }
        if (key == "scene") {
            if (value != "campus" && value != "occlusion") {
                error = "scene must be campus or occlusion";
                return false;
            }
            scene = value;
            continue;
        }
        unsigned long long number = 0;
        if (!readNumber(value.c_str(), number)) {
            error = "not a number: " + argument;
            return false;
        }
        if (key == "objects")
            objects = static_cast<std::size_t>(number);
        else if (key == "frames")
            frames = static_cast<unsigned int>(number);
        else if (key == "warmup")
            warmup = static_cast<unsigned int>(number);
        else if (key == "width")
            width = static_cast<int>(number);
        else if (key == "height")
            height = static_cast<int>(number);
        else if (key == "seed")
            seed = number;
        else if (key == "meshes")
            meshes = static_cast<unsigned int>(number);
        else if (key == "picks")
            picks = static_cast<unsigned int>(number);
        else if (key == "verify")
            verify = static_cast<unsigned int>(number);
        else if (key == "culling" && number <= 2)
            culling = static_cast<int>(number);
        else if (key == "turn")
            turnFrames = static_cast<unsigned int>(number);
        else if (key == "visible" && number <= 1)
            countVisible = number == 1;
        else if (key == "shadows" && number <= 3)
            shadows = static_cast<int>(number);
        else if (key == "shadows") {
            error = "shadows must be a level from 0 to 3";
            return false;
        }
        else if (key == "ssao" && number <= 3)
            ssao = static_cast<int>(number);
        else if (key == "ssao") {
            error = "ssao must be a level from 0 to 3";
            return false;
        }
        else {
            error = "unknown argument: " + argument;
            return false;
        }
    }
    if (width <= 0 || height <= 0) {
        error = "width and height must be positive";
        return false;
    }
    return true;
}

} // namespace Kelvor
