// The default label font, "fonts/simhei.ttf". Labels carry Latin and CJK
// text, so it is Debian's WenQuanYi Micro Hei (fonts-wqy-microhei), copied
// under the name the labels ask for. The file is a TrueType collection;
// OpenSceneGraph's freetype reader takes it by the .ttf name as well, because
// FreeType recognises the format by content and opens the collection's first
// face, which covers Latin, Chinese, Japanese and Korean.
#include "tools/resgen/ResourceGenerator.h"

#include <cstdio>
#include <fstream>

namespace {

char const* const kSourceFonts[] = {
    "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc",
};

bool copyFile(std::string const& from, std::string const& to)
{
    std::ifstream in(from, std::ios::binary);
    if (!in)
        return false;
    std::ofstream out(to, std::ios::binary | std::ios::trunc);
    out << in.rdbuf();
    return static_cast<bool>(out);
}

Tarnwick::ResGen::ResourceGeneratorRegistration const reg("fonts", [](std::string const& root) {
    std::string const target = root + "fonts/simhei.ttf";
    if (!Tarnwick::ResGen::makeParentDirectories(target))
        return false;
    for (char const* source : kSourceFonts) {
        if (copyFile(source, target))
            return true;
    }
    std::fprintf(stderr, "tarnwick-resgen: no CJK font found; install fonts-wqy-microhei\n");
    return false;
});

} // namespace
