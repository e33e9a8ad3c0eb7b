#pragma once

#include <osg/Image>
#include <osg/ref_ptr>

#include <string>

namespace Kelvor {

// What counts as "the same picture". Rasterisers differ in the last bit of an
// interpolated colour and in which pixels an edge covers, so a comparison
// always allows some per-channel difference and some stray pixels.
struct ImageTolerance
{
    // Largest accepted difference of one channel, in 8-bit steps (0-255).
    // Float images are measured on the same scale (1.0 = 255 steps).
    int maxChannelDifference = 2;
    // Fraction (0-1) of pixels allowed to exceed maxChannelDifference.
    double maxFailingFraction = 0.0;
};

struct ImageCompareResult
{
    bool passed = false;
    // Fraction of pixels with a channel beyond the tolerance.
    double failingFraction = 1.0;
    // Largest channel difference seen anywhere, in 8-bit steps.
    int maxDifference = 0;
    // Empty on success; otherwise what failed and where the evidence went.
    std::string message;
    // Written only on failure (and only when the sizes matched).
    std::string actualPath;
    std::string diffPath;
};

// Compares two images pixel by pixel through osg::Image::getColor, so any
// pixel format and type OpenSceneGraph can read compares (a missing alpha
// channel reads as 1). Both images must have the same size. On failure the
// actual, the expected and a diff image are written as PNG to the output
// folder, named after the comparison.
class ImageCompare
{
public:
    explicit ImageCompare(std::string outputDirectory);
    // Output folder from TestPaths::outputDirectory().
    ImageCompare();

    ImageCompareResult compare(osg::Image const& actual, osg::Image const& expected,
                               ImageTolerance const& tolerance, std::string const& name) const;

    // An 8-bit RGBA copy: what gets written, whatever the source format.
    static osg::ref_ptr<osg::Image> toRGBA8(osg::Image const& image);

private:
    // Black where the pixels agree, the amplified difference where they differ
    // within tolerance, pure red where they fail: small drifts stay visible
    // without hiding the real failures.
    osg::ref_ptr<osg::Image> makeDiffImage(osg::Image const& actual, osg::Image const& expected,
                                           int maxChannelDifference) const;
    bool writeImage(osg::Image const& image, std::string const& path) const;
    std::string evidencePath(std::string const& name, char const* suffix) const;

    std::string mOutputDirectory;
};

} // namespace Kelvor
