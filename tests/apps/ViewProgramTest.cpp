// The viewer program run as a user runs it, on input it must refuse: one
// line on stderr, a non-zero status, no crash. All of these stop before a
// window is needed, so they run without a display.
#include "ViewProgramRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

using namespace Kelvor;
using apptest::tempPath;

namespace {

void expectRefused(ViewRun const& run, std::string const& mentions)
{
    ASSERT_TRUE(run.started) << "could not run " << viewProgramPath();
    EXPECT_EQ(run.signal, 0) << "crashed: " << run.err;
    EXPECT_TRUE(run.exited);
    EXPECT_NE(run.exitCode, 0);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << "stderr: " << run.err;
    EXPECT_EQ(run.err.rfind("tarnwick-view: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(mentions), std::string::npos) << "stderr: " << run.err;
}

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
    "#3=IFCPERSONANDORGANIZATION(#1,#2,$);\n"
    "#4=IFCAPPLICATION(#2,'1.0','App','App');\n"
    "#5=IFCOWNERHISTORY(#3,#4,$,.ADDED.,$,$,$,0);\n"
    "#6=IFCCARTESIANPOINT((0.,0.,0.));\n"
    "#7=IFCDIRECTION((0.,0.,1.));\n"
    "#8=IFCAXIS2PLACEMENT3D(#6,#7,$);\n"
    "#9=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#8,$);\n"
    "#10=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',#5,'Proj";

// Runs the program on a file of this content, with `extra` arguments, and
// expects a refusal that names `mentions`, or the file when that is empty.
void expectFileRefused(char const* name, std::string const& content, std::string const& mentions = "",
                       std::vector<std::string> extra = {})
{
    std::string const path = tempPath(name);
    apptest::writeFile(path, content);
    extra.insert(extra.begin(), path);
    expectRefused(runViewProgram(extra), mentions.empty() ? path : mentions);
    std::remove(path.c_str());
}

} // namespace

TEST(ViewProgramTest, MissingAndUnreadableModelsAreNamedInOneLine)
{
    std::string const missing = tempPath("no-such-model.ifc");
    expectRefused(runViewProgram({missing}), missing);

    expectFileRefused("empty.obj", "", "empty");
    expectFileRefused("model.unknownformat", "some bytes", ".unknownformat");
}

TEST(ViewProgramTest, BrokenIfcFilesAreRefusedWithoutCrashing)
{
    std::vector<std::string> const capture = {"--capture", tempPath("never.png")};
    expectFileRefused("truncated.ifc", kTruncatedIfc, "", capture);

    // A PNG signature and some binary noise behind an .ifc name.
    std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    for (int i = 0; i < 4000; ++i)
        bytes.push_back(static_cast<char>((i * 131) & 0xff));
    expectFileRefused("picture.ifc", bytes, "", capture);
    expectFileRefused("letter.ifc", "Dear reader,\nthis is not a building.\n", "", capture);
}

TEST(ViewProgramTest, BadCommandLinesAndOutputsAreRefusedBeforeAnyWork)
{
    ViewRun const size = runViewProgram({"--size", "640by480"});
    expectRefused(size, "--size");
    EXPECT_EQ(size.exitCode, 2) << "usage errors have their own status";
    expectRefused(runViewProgram({"--size", "0x480", "--capture", tempPath("x.png")}), "--size");
    expectRefused(runViewProgram({"--camera", "1,2,3"}), "--camera");

    expectRefused(runViewProgram({"--capture", "/nonexistent-folder/out.png"}), "/nonexistent-folder/out.png");
    expectRefused(runViewProgram({"--capture", "/proc/out.png"}), "/proc/out.png");
    expectRefused(runViewProgram({"--capture", tempPath("out.doc")}), ".png");
    // A refused capture leaves nothing behind.
    EXPECT_NE(::access(tempPath("out.doc").c_str(), F_OK), 0);

    ViewRun const help = runViewProgram({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("usage: tarnwick-view"), std::string::npos);
    EXPECT_TRUE(help.err.empty());
}

TEST(ViewProgramTest, AWindowWithoutDisplayIsRefusedAndPointsAtCapture)
{
    expectRefused(runViewProgram({"--builtin"}, true), "--capture");
}
