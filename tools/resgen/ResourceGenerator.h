#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Tarnwick::ResGen {

// One family of generated resources (sky faces, noise, error images...).
// `generate` writes its files below the resource root and returns false
// with a message on stderr when it could not.
struct ResourceGenerator {
    std::string name;
    std::function<bool(std::string const& root)> generate;
};

std::vector<ResourceGenerator>& generators();

// Static registration: one object per family, in that family's source file,
// so that families are added without touching a shared list.
struct ResourceGeneratorRegistration {
    ResourceGeneratorRegistration(char const* name, std::function<bool(std::string const&)> fn)
    {
        generators().push_back({name, std::move(fn)});
    }
};

// Creates every missing folder of `path` (a file path or a folder ending in '/').
bool makeParentDirectories(std::string const& path);

} // namespace Tarnwick::ResGen
