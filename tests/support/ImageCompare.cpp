#include "support/ImageCompare.h"

#include "support/TestPaths.h"

#include <osgDB/WriteFile>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <system_error>

namespace Kelvor {

namespace {

int channelSteps(float a, float b)
{
    return static_cast<int>(std::lround(std::fabs(a - b) * 255.0f));
}

int largestChannelSteps(osg::Vec4 const& a, osg::Vec4 const& b)
{
    int steps = 0;
    for (int c = 0; c < 4; ++c)
        steps = std::max(steps, channelSteps(a[c], b[c]));
    return steps;
}

unsigned char toByte(float value)
{
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f));
}

bool hasPixels(osg::Image const& image)
{
    return image.data() != nullptr && image.s() > 0 && image.t() > 0;
}

// Gives evidence files names that are safe in any folder: test names carry '/'.
std::string fileSafe(std::string name)
{
    for (char& c : name)
    {
        bool const keep = std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.';
        if (!keep)
            c = '_';
    }
    return name;
}

} // namespace

ImageCompare::ImageCompare(std::string outputDirectory)
    : mOutputDirectory(std::move(outputDirectory))
{
}

ImageCompare::ImageCompare()
    : ImageCompare(TestPaths::outputDirectory())
{
}

ImageCompareResult ImageCompare::compare(osg::Image const& actual, osg::Image const& expected,
                                         ImageTolerance const& tolerance, std::string const& name) const
{
    ImageCompareResult result;
    if (!hasPixels(actual) || !hasPixels(expected))
    {
        result.message = "image '" + name + "': " + (hasPixels(actual) ? "expected" : "actual") + " image has no pixels";
        return result;
    }
    if (actual.s() != expected.s() || actual.t() != expected.t() || actual.r() != expected.r())
    {
        std::ostringstream out;
        out << "image '" << name << "': size " << actual.s() << "x" << actual.t() << "x" << actual.r()
            << " differs from expected " << expected.s() << "x" << expected.t() << "x" << expected.r();
        result.message = out.str();
        return result;
    }

    long failing = 0;
    long const total = static_cast<long>(actual.s()) * actual.t();
    for (int t = 0; t < actual.t(); ++t)
    {
        for (int s = 0; s < actual.s(); ++s)
        {
            int const steps = largestChannelSteps(actual.getColor(s, t), expected.getColor(s, t));
            result.maxDifference = std::max(result.maxDifference, steps);
            if (steps > tolerance.maxChannelDifference)
                ++failing;
        }
    }
    result.failingFraction = static_cast<double>(failing) / static_cast<double>(total);
    result.passed = result.failingFraction <= tolerance.maxFailingFraction;
    if (result.passed)
        return result;

    std::string const actualPath = evidencePath(name, "actual");
    std::string const diffPath = evidencePath(name, "diff");
    bool const written = writeImage(actual, actualPath)
        && writeImage(expected, evidencePath(name, "expected"))
        && writeImage(*makeDiffImage(actual, expected, tolerance.maxChannelDifference), diffPath);
    if (written)
    {
        result.actualPath = actualPath;
        result.diffPath = diffPath;
    }

    std::ostringstream out;
    out << "image '" << name << "': " << failing << " of " << total << " pixels (" << result.failingFraction * 100.0
        << "%) differ by more than " << tolerance.maxChannelDifference << " (allowed "
        << tolerance.maxFailingFraction * 100.0 << "%), largest channel difference " << result.maxDifference;
    if (written)
        out << "; actual: " << actualPath << ", diff: " << diffPath;
    else
        out << "; could not write the evidence to " << mOutputDirectory;
    result.message = out.str();
    return result;
}

osg::ref_ptr<osg::Image> ImageCompare::toRGBA8(osg::Image const& image)
{
    osg::ref_ptr<osg::Image> copy = new osg::Image;
    copy->allocateImage(image.s(), image.t(), 1, GL_RGBA, GL_UNSIGNED_BYTE);
    copy->setOrigin(image.getOrigin());
    for (int t = 0; t < image.t(); ++t)
    {
        for (int s = 0; s < image.s(); ++s)
        {
            osg::Vec4 const colour = image.getColor(s, t);
            unsigned char* pixel = copy->data(s, t);
            for (int c = 0; c < 4; ++c)
                pixel[c] = toByte(colour[c]);
        }
    }
    return copy;
}

osg::ref_ptr<osg::Image> ImageCompare::makeDiffImage(osg::Image const& actual, osg::Image const& expected,
                                                     int maxChannelDifference) const
{
    // Amplified so that a difference of a few steps is visible to the eye.
    constexpr int kAmplification = 16;
    osg::ref_ptr<osg::Image> diff = new osg::Image;
    diff->allocateImage(actual.s(), actual.t(), 1, GL_RGBA, GL_UNSIGNED_BYTE);
    diff->setOrigin(actual.getOrigin());
    for (int t = 0; t < actual.t(); ++t)
    {
        for (int s = 0; s < actual.s(); ++s)
        {
            osg::Vec4 const a = actual.getColor(s, t);
            osg::Vec4 const e = expected.getColor(s, t);
            unsigned char* pixel = diff->data(s, t);
            pixel[3] = 255;
            if (largestChannelSteps(a, e) > maxChannelDifference)
            {
                pixel[0] = 255;
                pixel[1] = 0;
                pixel[2] = 0;
                continue;
            }
            for (int c = 0; c < 3; ++c)
                pixel[c] = static_cast<unsigned char>(std::min(255, channelSteps(a[c], e[c]) * kAmplification));
        }
    }
    return diff;
}

bool ImageCompare::writeImage(osg::Image const& image, std::string const& path) const
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (error)
        return false;
    return osgDB::writeImageFile(*toRGBA8(image), path);
}

std::string ImageCompare::evidencePath(std::string const& name, char const* suffix) const
{
    return mOutputDirectory + "/" + fileSafe(name) + "-" + suffix + ".png";
}

} // namespace Kelvor
