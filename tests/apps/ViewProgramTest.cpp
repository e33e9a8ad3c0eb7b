// The viewer program run as a user runs it, on input it must refuse: one
// line on stderr, a non-zero status, no crash and no hang. Each case is one
// run of the program. All of them stop before a window is needed, so they
// run without a display.
#include "ViewProgramRunner.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/ShapeDrawable>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>

using namespace Kelvor;
using apptest::tempPath;

namespace {

// A refusal may take as long as reading a large file; a hang takes forever.
constexpr std::chrono::seconds kRunLimit(60);

// The head of a real IFC file, cut off in the middle of an entity.
char const* const kTruncatedIfc =
    "ISO-10303-21;\n"
    "HEADER;\n"
    "FILE_DESCRIPTION(('ViewDefinition [CoordinationView]'),'2;1');\n"
    "FILE_NAME('cut.ifc','2024-01-01T00:00:00',(''),(''),'','','');\n"
    "FILE_SCHEMA(('IFC2X3'));\n"
    "ENDSEC;\n"
    "DATA;\n"
    "#1=IFCPERSON($,'Nachname','Vorname',$,$,$,$,$);\n"
    "#2=IFCORGANIZATION($,'Org',$,$,$);\n"
    "#10=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',#5,'Proj";

// The first half of a real tile: a box written by OpenSceneGraph's own writer.
std::string halfATile()
{
    osg::ref_ptr<osg::Geode> tile = new osg::Geode;
    tile->addDrawable(new osg::ShapeDrawable(new osg::Box(osg::Vec3(), 1.0f)));
    std::string const whole = tempPath("whole.osgb");
    if (!osgDB::writeNodeFile(*tile, whole))
        return std::string();
    std::string const bytes = apptest::readWhole(whole);
    std::remove(whole.c_str());
    return bytes.substr(0, bytes.size() / 2);
}

// The same noise for every run, so that a failure can be repeated.
std::string randomBytes(unsigned int seed)
{
    std::mt19937 generator(seed);
    std::string bytes(4096, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator() & 0xff);
    return bytes;
}

// One bad input: the arguments, where "{file}" stands for a file made with
// `content` under `fileName` (none when `fileName` is empty), and what the
// one line on stderr must name ("{file}": the file's path).
struct BadInput
{
    std::string name;
    std::vector<std::string> arguments;
    std::string fileName;
    std::function<std::string()> content;
    std::string mentions = "{file}";
};

std::vector<BadInput> badInputs()
{
    std::vector<BadInput> inputs = {
        // Command lines.
        {"UnknownOption", {"--frobnicate"}, "", nullptr, "--frobnicate"},
        {"MissingValue", {"--size"}, "", nullptr, "--size"},
        {"SizeWithoutHeight", {"--size", "640x"}, "", nullptr, "--size"},
        {"SizeZero", {"--size", "0x480"}, "", nullptr, "--size"},
        {"SizeNegative", {"--size", "-640x480"}, "", nullptr, "--size"},
        {"SizeHuge", {"--size", "100000x100000"}, "", nullptr, "--size"},
        {"SizeBeyondAnyInteger", {"--size", "99999999999999999999x480"}, "", nullptr, "--size"},
        {"CameraTooFewNumbers", {"--camera", "1,2,3"}, "", nullptr, "--camera"},
        {"CameraInfinite", {"--camera", "1e999,0,0,0,0,0"}, "", nullptr, "--camera"},
        {"CameraNotANumber", {"--camera", "nan,0,0,0,0,0"}, "", nullptr, "--camera"},
        {"UnknownView", {"--view", "sideways"}, "", nullptr, "--view"},
        {"UnknownStyle", {"--style", "fancy"}, "", nullptr, "--style"},
        {"BadColour", {"--background", "#12345"}, "", nullptr, "--background"},
        {"ColourOutOfRange", {"--background", "2,0,0"}, "", nullptr, "--background"},
        {"TwoModels", {"a.ifc", "b.ifc"}, "", nullptr, "more than one model"},
        // Captures that cannot be written.
        {"CaptureInMissingFolder", {"--capture", "/nonexistent-folder/out.png"}, "", nullptr,
         "/nonexistent-folder/out.png"},
        {"CaptureInReadOnlyFolder", {"--capture", "/proc/out.png"}, "", nullptr, "/proc/out.png"},
        {"CaptureNotAnImage", {"--capture", "{file}"}, "out.doc", nullptr, ".png"},
        // Files that are not there or hold nothing.
        {"MissingModel", {"{file}", "--capture", "never.png"}, "no-such-model.ifc", nullptr},
        {"EmptyModel", {"{file}", "--capture", "never.png"}, "empty.obj", [] { return std::string(); }},
        {"UnknownFormat", {"{file}", "--capture", "never.png"}, "model.unknownformat", [] { return std::string("some bytes"); },
         ".unknownformat"},
        // Files cut short.
        {"TruncatedIfc", {"{file}", "--capture", "never.png"}, "cut.ifc", [] { return std::string(kTruncatedIfc); }},
        {"TruncatedTile", {"{file}", "--capture", "never.png"}, "cut.osgb", halfATile},
        {"TruncatedTileList", {"{file}", "--capture", "never.png"}, "cut.lfp",
         [] { return std::string("<?xml version=\"1.0\"?>\n<DataDefine><NodeList><Node>Tile_1/Ti"); }},
        {"TruncatedCollada", {"{file}", "--capture", "never.png"}, "cut.dae",
         [] { return std::string("<?xml version=\"1.0\"?>\n<COLLADA xmlns=\"http://www.collada.org/2005/11/"
                                 "COLLADASchema\" version=\"1.4.1\"><library_geometries><geometry id=\"g\"><mesh>"); }},
        {"TruncatedObj", {"{file}", "--capture", "never.png"}, "cut.obj",
         [] { return std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2"); }},
        {"LetterAsIfc", {"{file}", "--capture", "never.png"}, "letter.ifc",
         [] { return std::string("Dear reader,\nthis is not a building.\n"); }},
    };
    // Noise under the name of every format the viewer offers.
    static char const* const kExtensions[] = {"ifc", "osgb", "s3c", "lfp", "fbx", "osg", "osgt", "osgx", "ive",
                                              "obj", "3ds", "dae", "x", "stl", "ply", "lwo", "ac", "flt"};
    for (std::size_t i = 0; i < std::size(kExtensions); ++i) {
        unsigned int const seed = static_cast<unsigned int>(i + 1);
        inputs.push_back({std::string("RandomBytesAs_") + kExtensions[i], {"{file}", "--capture", "never.png"},
                          std::string("noise.") + kExtensions[i], [seed] { return randomBytes(seed); }});
    }
    return inputs;
}

// Names the case in failure messages instead of dumping its bytes.
void PrintTo(BadInput const& input, std::ostream* out)
{
    *out << input.name;
}

class ViewProgramTest : public ::testing::TestWithParam<BadInput>
{
};

std::string substitute(std::string text, std::string const& file)
{
    std::size_t const at = text.find("{file}");
    if (at != std::string::npos)
        text.replace(at, 6, file);
    return text;
}

} // namespace

TEST_P(ViewProgramTest, RefusesInOneLineWithoutCrashOrHang)
{
    BadInput const& input = GetParam();
    std::string const file = input.fileName.empty() ? std::string() : tempPath(input.fileName.c_str());
    if (input.content)
        apptest::writeFile(file, input.content());
    std::vector<std::string> arguments;
    for (std::string const& argument : input.arguments) {
        // Captures of cases that should never get that far go to /tmp too.
        arguments.push_back(argument == "never.png" ? tempPath("never.png") : substitute(argument, file));
    }

    ViewRun const run = runViewProgram(arguments, false, kRunLimit);
    if (!file.empty())
        std::remove(file.c_str());

    ASSERT_TRUE(run.started) << "could not run " << viewProgramPath();
    EXPECT_FALSE(run.hung) << "still running after " << kRunLimit.count() << " s";
    EXPECT_EQ(run.signal, 0) << "crashed: " << run.err;
    EXPECT_TRUE(run.exited);
    EXPECT_NE(run.exitCode, 0) << "accepted; stdout: " << run.out;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << "stderr: " << run.err;
    EXPECT_EQ(run.err.rfind("tarnwick-view: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(substitute(input.mentions, file)), std::string::npos) << "stderr: " << run.err;
    EXPECT_NE(::access(tempPath("never.png").c_str(), F_OK), 0) << "a refused run left a capture behind";
}

INSTANTIATE_TEST_SUITE_P(BadInput, ViewProgramTest, ::testing::ValuesIn(badInputs()),
                         [](::testing::TestParamInfo<BadInput> const& info) { return info.param.name; });

TEST(ViewProgramUsageTest, UsageErrorsHaveTheirOwnStatusAndHelpAndVersionSucceed)
{
    EXPECT_EQ(runViewProgram({"--size", "640by480"}).exitCode, 2);

    ViewRun const help = runViewProgram({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("usage: tarnwick-view"), std::string::npos);
    EXPECT_TRUE(help.err.empty());

    ViewRun const version = runViewProgram({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out.rfind("tarnwick-view ", 0), 0u) << version.out;
    EXPECT_EQ(std::count(version.out.begin(), version.out.end(), '\n'), 1) << version.out;
}

// Without a display the viewer says so at once, before loading anything:
// the large sample would take seconds.
TEST(ViewProgramUsageTest, AWindowWithoutDisplayIsRefusedBeforeTheModelLoads)
{
    ViewRun const run = runViewProgram({"/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc"}, true);
    EXPECT_NE(run.exitCode, 0);
    EXPECT_NE(run.err.find("--capture"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("products"), std::string::npos) << "loaded first: " << run.out;

    std::string const missing = tempPath("no-such-model.ifc");
    ViewRun const wrongName = runViewProgram({missing}, true);
    EXPECT_NE(wrongName.err.find(missing), std::string::npos) << "a wrong file name comes first: " << wrongName.err;
}
