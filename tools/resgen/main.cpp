#include "tools/resgen/ResourceGenerator.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace Tarnwick::ResGen {

std::vector<ResourceGenerator>& generators()
{
    static std::vector<ResourceGenerator> list;
    return list;
}

bool makeParentDirectories(std::string const& path)
{
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        std::string const dir = path.substr(0, slash);
        if (::mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) {
            std::fprintf(stderr, "tarnwick-resgen: cannot create %s: %s\n", dir.c_str(), std::strerror(errno));
            return false;
        }
    }
    return true;
}

} // namespace Tarnwick::ResGen

int main(int argc, char** argv)
{
    using namespace Tarnwick::ResGen;
    if (argc != 2) {
        std::fprintf(stderr, "usage: tarnwick-resgen OUTPUT_DIR\n");
        return 2;
    }
    std::string root = argv[1];
    if (!root.empty() && root.back() != '/')
        root += '/';
    if (!makeParentDirectories(root))
        return 1;

    // Registration order depends on the link; sorting keeps runs identical.
    auto list = generators();
    std::sort(list.begin(), list.end(), [](auto const& a, auto const& b) { return a.name < b.name; });
    int failed = 0;
    for (auto const& g : list) {
        if (!g.generate(root)) {
            std::fprintf(stderr, "tarnwick-resgen: %s failed\n", g.name.c_str());
            ++failed;
        }
    }
    return failed == 0 ? 0 : 1;
}
