#include "support/GoldenImage.h"

#include "support/TestPaths.h"

#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Kelvor {

namespace {

bool updateRequested()
{
    char const* update = std::getenv("TARNWICK_UPDATE_GOLDEN");
    return update != nullptr && std::strcmp(update, "1") == 0;
}

::testing::AssertionResult writeGolden(osg::Image const& image, std::string const& path)
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (error || !osgDB::writeImageFile(*ImageCompare::toRGBA8(image), path))
        return ::testing::AssertionFailure() << "could not write golden image " << path;
    std::printf("golden image written: %s\n", path.c_str());
    return ::testing::AssertionSuccess();
}

} // namespace

::testing::AssertionResult matchesGolden(osg::Image const& image, std::string const& name,
                                         ImageTolerance const& tolerance)
{
    std::string const path = TestPaths::goldenDirectory() + "/" + name + ".png";
    if (updateRequested())
        return writeGolden(image, path);

    osg::ref_ptr<osg::Image> golden = std::filesystem::exists(path) ? osgDB::readImageFile(path) : nullptr;
    if (!golden)
    {
        return ::testing::AssertionFailure() << "no readable golden image " << path
                                             << " (run with TARNWICK_UPDATE_GOLDEN=1 to create it)";
    }
    ImageCompareResult const result = ImageCompare().compare(image, *golden, tolerance, name);
    if (result.passed)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << result.message << " (golden: " << path << ")";
}

void expectMatchesGolden(osg::Image const& image, std::string const& name, ImageTolerance const& tolerance)
{
    EXPECT_TRUE(matchesGolden(image, name, tolerance));
}

} // namespace Kelvor
