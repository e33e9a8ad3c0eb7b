// Picking in the viewer program as a user does it: clicks on the FZK-Haus
// in the program's own window, answered through CKVRCPickSelectObject and
// printed as the IFC product under the pointer.
#include "ViewWindowTest.h"

#include <sstream>
#include <vector>

using namespace Kelvor;

namespace {

char const* const kHausPath = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";
constexpr int kWidth = 320;
constexpr int kHeight = 240;

// The lines that answer picks, in the order of the clicks.
std::vector<std::string> pickLines(std::string const& output)
{
    std::vector<std::string> lines;
    std::istringstream in(output);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("picked", 0) == 0 || line == "nothing picked")
            lines.push_back(line);
    }
    return lines;
}

using ViewPickGLTest = apptest::ViewWindowTest;

} // namespace

TEST_F(ViewPickGLTest, ClicksOnTheFzkHausNameItsWindowsAndTheSkyNamesNothing)
{
    if (::access(kHausPath, R_OK) != 0)
        GTEST_SKIP() << "the FZK-Haus sample (assimp-testmodels) is not installed";
    ViewProcess const process =
        startViewProgram({kHausPath, "--view", "front", "--size", std::to_string(kWidth) + "x" + std::to_string(kHeight)});
    ASSERT_GT(process.pid, 0);
    Window const window = waitForWindow(process, std::string("tarnwick-view - ") + kHausPath);
    ASSERT_NE(window, 0u) << "the viewer's window did not appear";

    // First a corner of the sky, then a grid over the whole front view, where
    // the house fills the middle with a row of windows.
    click(window, 4, 4);
    unsigned int clicks = 1;
    for (int y = 30; y < kHeight; y += 12) {
        for (int x = 10; x < kWidth; x += 12) {
            click(window, x, y);
            ++clicks;
        }
    }
    // Every click is answered and printed before the program is told to end.
    auto const answered = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (pickLines(apptest::readWhole(process.outPath)).size() < clicks && std::chrono::steady_clock::now() < answered)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    key(window, XK_q);

    ViewRun const run = finishViewProgram(process);
    EXPECT_EQ(run.signal, 0) << "crashed; stderr: " << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    std::vector<std::string> const lines = pickLines(run.out);
    ASSERT_EQ(lines.size(), clicks) << run.out;
    EXPECT_EQ(lines.front(), "nothing picked");
    unsigned int windows = 0;
    unsigned int walls = 0;
    for (std::string const& line : lines) {
        if (line.rfind("picked IfcWindow ", 0) == 0) {
            ++windows;
            EXPECT_NE(line.find(" GUID "), std::string::npos) << line;
        }
        if (line.rfind("picked IfcWall", 0) == 0)
            ++walls;
    }
    RecordProperty("windowPicks", int(windows));
    RecordProperty("wallPicks", int(walls));
    EXPECT_GT(windows, 0u) << run.out;
    EXPECT_GT(walls, 0u) << run.out;
}
