// Compares an image file with a golden image: the frame the example host
// captured from an installed backend. Usage: install_capture_check IMAGE
#include "support/GoldenImage.h"

#include <osgDB/ReadFile>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s IMAGE\n", argv[0]);
        return 2;
    }
    osg::ref_ptr<osg::Image> image = osgDB::readImageFile(argv[1]);
    if (!image) {
        std::fprintf(stderr, "%s: not a readable image\n", argv[1]);
        return 1;
    }
    ::testing::AssertionResult const result = Kelvor::matchesGolden(*image, "example_host");
    if (!result) {
        std::fprintf(stderr, "%s\n", result.message());
        return 1;
    }
    return 0;
}
