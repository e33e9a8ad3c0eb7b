// tarnwick-atmosphere: precomputes the atmosphere's three tables on a
// headless GL context and writes them into a folder.
#include "environment/CAtmosphericModelGeometry.h"
#include "tools/atmosphere/KVAtmosphereGeneratorRun.h"

#include <osg/Notify>

#include <cstdio>
#include <cstring>
#include <string>

using namespace Kelvor;

int main(int argc, char** argv)
{
    std::string folder;
    bool reduced = false;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strcmp(argv[i], "--reduced") == 0)
            reduced = true;
        else if (argv[i][0] != '-' && folder.empty())
            folder = argv[i];
        else
        {
            std::fprintf(stderr, "usage: tarnwick-atmosphere [--reduced] [OUTPUT_DIR]\n"
                                 "  OUTPUT_DIR defaults to the resource directory's skybox folder.\n");
            return 2;
        }
    }
    osg::setNotifyLevel(osg::WARN);

    osg::ref_ptr<CBGGeode> geode = createAtmosphereModelGeode();
    auto* generator = static_cast<CAtmosphericModelGeometry*>(geode->getDrawable(0));
    if (!folder.empty())
        generator->setDumpFolder(folder);
    generator->setReducedSampling(reduced);
    generator->setProgress([](std::string const& step, int order, double seconds) {
        if (order > 0)
            std::printf("[%7.1f s] %s, order %d\n", seconds, step.c_str(), order);
        else
            std::printf("[%7.1f s] %s\n", seconds, step.c_str());
        std::fflush(stdout);
    });

    std::string error;
    if (!KVAtmosphereGeneratorRun::draw(geode.get(), 1, &error))
    {
        std::fprintf(stderr, "tarnwick-atmosphere: %s\n", error.c_str());
        return 1;
    }
    std::size_t const expected = 3;
    if (generator->getWrittenFiles().size() != expected)
    {
        std::fprintf(stderr, "tarnwick-atmosphere: wrote %zu of %zu tables into %s\n",
                     generator->getWrittenFiles().size(), expected, generator->getDumpFolder().c_str());
        return 1;
    }
    return 0;
}
