#pragma once

#include "apps/view/ViewOptions.h"

#include <string>
#include <vector>

namespace Kelvor {

// Reads the viewer's command line. Nothing is printed here: a refusal comes
// back as one line of text for the program to show.
class ViewOptionParser
{
public:
    // False with getError() set on the first argument that makes no sense.
    bool parse(std::vector<std::string> const& arguments, ViewOptions& options);
    std::string const& getError() const { return mError; }

    static std::string usage();

    // "WxH" with both sides in [16, 8192]; the pieces are exposed because the
    // camera and colour parsers of other tools want the same strictness.
    static bool parseSize(std::string const& text, int& width, int& height);
    // Exactly `count` comma-separated finite numbers, nothing else.
    static bool parseNumbers(std::string const& text, std::size_t count, double* out);
    // "#RRGGBB", or "r,g,b" with each channel in [0, 1].
    static bool parseColour(std::string const& text, double rgb[3]);
    static bool isViewName(std::string const& name);
    // The style's number in the render configuration, or -1.
    static int styleNumber(std::string const& name);

private:
    bool fail(std::string message);

    std::string mError;
};

} // namespace Kelvor
