#include "apps/view/ViewOptionParser.h"

#include "apps/view/ViewFeatures.h"
#include "apps/view/ViewSunPosition.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace Kelvor {

namespace {

// Large enough for any screen, small enough that an RGBA capture of it
// (256 MB) still fits in memory on a build machine.
constexpr int kMinSide = 16;
constexpr int kMaxSide = 8192;

char const* const kViewNames[] = {"iso", "front", "back", "left", "right", "top"};

struct StyleName
{
    char const* name;
    int number;
};
// Numbers of CKVRenderConfig::RenderStyle.
constexpr StyleName kStyles[] = {{"shaded", 0}, {"edges", 1}, {"white", 2}, {"lines", 3}};

bool parseDouble(std::string const& text, double& out)
{
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())))
        return false;
    char* end = nullptr;
    out = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size() && std::isfinite(out);
}

bool parseSide(std::string const& text, int& out)
{
    if (text.empty() || text.size() > 5)
        return false;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
    }
    out = std::atoi(text.c_str());
    return out >= kMinSide && out <= kMaxSide;
}

} // namespace

bool ViewOptionParser::fail(std::string message)
{
    mError = std::move(message);
    return false;
}

bool ViewOptionParser::parseSize(std::string const& text, int& width, int& height)
{
    std::size_t const x = text.find_first_of("xX");
    if (x == std::string::npos)
        return false;
    int w = 0;
    int h = 0;
    if (!parseSide(text.substr(0, x), w) || !parseSide(text.substr(x + 1), h))
        return false;
    width = w;
    height = h;
    return true;
}

bool ViewOptionParser::parseNumbers(std::string const& text, std::size_t count, double* out)
{
    std::size_t start = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const comma = text.find(',', start);
        bool const last = i + 1 == count;
        if (last != (comma == std::string::npos))
            return false;
        std::string const piece = text.substr(start, last ? std::string::npos : comma - start);
        if (!parseDouble(piece, out[i]))
            return false;
        start = comma + 1;
    }
    return true;
}

bool ViewOptionParser::parseColour(std::string const& text, double rgb[3])
{
    if (text.size() == 7 && text[0] == '#') {
        for (int i = 0; i < 3; ++i) {
            std::string const pair = text.substr(1 + 2 * i, 2);
            if (!std::isxdigit(static_cast<unsigned char>(pair[0])) ||
                !std::isxdigit(static_cast<unsigned char>(pair[1])))
                return false;
            rgb[i] = std::strtol(pair.c_str(), nullptr, 16) / 255.0;
        }
        return true;
    }
    double values[3];
    if (!parseNumbers(text, 3, values))
        return false;
    for (int i = 0; i < 3; ++i) {
        if (values[i] < 0.0 || values[i] > 1.0)
            return false;
        rgb[i] = values[i];
    }
    return true;
}

bool ViewOptionParser::isViewName(std::string const& name)
{
    for (char const* known : kViewNames) {
        if (name == known)
            return true;
    }
    return false;
}

int ViewOptionParser::styleNumber(std::string const& name)
{
    for (StyleName const& style : kStyles) {
        if (name == style.name || name == std::to_string(style.number))
            return style.number;
    }
    return -1;
}

bool ViewOptionParser::parse(std::vector<std::string> const& arguments, ViewOptions& options)
{
    mError.clear();
    bool viewGiven = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string const& argument = arguments[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= arguments.size())
                return fail(argument + " needs a value");
            out = arguments[++i];
            return true;
        };
        std::string text;
        if (argument == "-h" || argument == "--help") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (argument == "--capture") {
            if (!value(text))
                return false;
            if (text.empty())
                return fail("--capture needs a file name");
            options.capturePath = text;
        } else if (argument == "--size") {
            if (!value(text))
                return false;
            if (!parseSize(text, options.width, options.height))
                return fail("bad --size '" + text + "': expected WxH, each side from 16 to 8192");
        } else if (argument == "--view") {
            if (!value(text))
                return false;
            if (!isViewName(text))
                return fail("unknown --view '" + text + "': one of iso, front, back, left, right, top");
            if (options.hasCamera)
                return fail("--view and --camera exclude each other");
            options.viewName = text;
            viewGiven = true;
        } else if (argument == "--camera") {
            if (!value(text))
                return false;
            double numbers[6];
            if (!parseNumbers(text, 6, numbers))
                return fail("bad --camera '" + text + "': expected ex,ey,ez,tx,ty,tz");
            if (numbers[0] == numbers[3] && numbers[1] == numbers[4] && numbers[2] == numbers[5])
                return fail("bad --camera '" + text + "': eye and target are the same point");
            if (viewGiven)
                return fail("--view and --camera exclude each other");
            options.hasCamera = true;
            for (int k = 0; k < 3; ++k) {
                options.eye[k] = numbers[k];
                options.target[k] = numbers[3 + k];
            }
        } else if (argument == "--style") {
            if (!value(text))
                return false;
            options.style = styleNumber(text);
            if (options.style < 0)
                return fail("unknown --style '" + text + "': one of shaded, edges, white, lines (or 0 to 3)");
            // Every style but plain shading draws edges.
            if (options.style != 0 && !ViewFeatures::isAvailable(ViewFeature::kEdges))
                return fail("--style " + text + ": " + ViewFeatures::notAvailable(ViewFeature::kEdges));
        } else if (argument == "--background") {
            if (!value(text))
                return false;
            if (text == "grey") {
                options.background = ViewOptions::Background::kGrey;
            } else if (text == "gradient") {
                options.background = ViewOptions::Background::kGradient;
            } else if (text == "sky") {
                if (!ViewFeatures::isAvailable(ViewFeature::kAtmosphere))
                    return fail("--background sky: " + ViewFeatures::notAvailable(ViewFeature::kAtmosphere));
                options.background = ViewOptions::Background::kSky;
            } else if (parseColour(text, options.backgroundColour.data())) {
                options.background = ViewOptions::Background::kColour;
            } else {
                return fail("bad --background '" + text + "': #RRGGBB, r,g,b in 0..1, grey, gradient or sky");
            }
        } else if (argument == "--time") {
            if (!value(text))
                return false;
            if (!ViewSunPosition::parseTime(text, options.timeOfDay))
                return fail("bad --time '" + text + "': expected HH or HH:MM from 00:00 to 24:00");
        } else if (argument == "--fog") {
            options.fog = true;
        } else if (argument == "--no-shadows") {
            options.shadows = false;
        } else if (argument == "--no-ssao") {
            options.ambientOcclusion = false;
        } else if (argument == "--no-culling") {
            options.culling = false;
        } else if (argument == "--builtin") {
            options.builtIn = true;
        } else if (argument.size() > 1 && argument[0] == '-') {
            return fail("unknown option " + argument);
        } else {
            if (!options.modelPath.empty())
                return fail("more than one model given: '" + options.modelPath + "' and '" + argument + "'");
            options.modelPath = argument;
        }
    }
    if (options.builtIn && !options.modelPath.empty())
        return fail("--builtin and a model file exclude each other");
    return true;
}

std::string ViewOptionParser::usage()
{
    std::string missing;
    for (ViewFeature const feature :
         {ViewFeature::kEdges, ViewFeature::kAtmosphere, ViewFeature::kShadows, ViewFeature::kAmbientOcclusion}) {
        if (!ViewFeatures::isAvailable(feature))
            missing += std::string(missing.empty() ? "" : ", ") + ViewFeatures::name(feature);
    }
    if (!missing.empty())
        missing = "Not available yet: " + missing + "; the options and keys that need them say so.\n";
    return "usage: tarnwick-view [MODEL] [--capture out.png] [--size WxH]\n"
           "                     [--view iso|front|back|left|right|top | --camera ex,ey,ez,tx,ty,tz]\n"
           "                     [--style shaded|edges|white|lines|0-3] [--background #RRGGBB|r,g,b|grey|gradient|sky]\n"
           "                     [--time HH:MM] [--fog] [--no-shadows] [--no-ssao] [--no-culling] [--builtin] [--version]\n"
           "MODEL: an IFC file, a tile set (.osgb, .s3c, .lfp), an FBX file or any model OpenSceneGraph reads.\n"
           "Without MODEL the FZK-Haus sample is shown when installed, else (and with --builtin)\n"
           "a small built-in building. Without an X display, --capture renders on a private Xvfb.\n" +
           missing;
}

} // namespace Kelvor
