#pragma once

#include "apps/view/ViewOptions.h"

#include <string>
#include <vector>

namespace Kelvor {

struct ViewContent;
class ViewSession;
class ViewWindow;

// The viewer program from command line to exit status: load the model,
// find an X server (a private Xvfb for headless captures), open the window,
// start the render context on it, then either capture one picture or run
// the interactive loop. Every failure ends in one line on stderr and a
// non-zero status, after the same ordered teardown as a normal exit.
class ViewApplication
{
public:
    enum ExitCode { kOk = 0, kFailed = 1, kUsage = 2 };

    int run(std::vector<std::string> const& arguments);

private:
    int fail(std::string const& message, int code = kFailed);
    int runSession(ViewOptions const& options, ViewContent& content);
    int interact(ViewOptions const& options, ViewContent const& content, ViewSession& session, ViewWindow& window);
};

} // namespace Kelvor
