#include "apps/view/ViewXServer.h"

#include <X11/Xlib.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Kelvor {

namespace {

// Xvfb on a loaded machine takes well under a second to come up; ten is for
// the slowest CI runners.
constexpr int kStartTimeoutMs = 10000;

} // namespace

ViewXServer::ViewXServer() = default;

ViewXServer::~ViewXServer()
{
    close();
}

bool ViewXServer::userDisplayAvailable()
{
    char const* name = std::getenv("DISPLAY");
    if (!name || !*name)
        return false;
    Display* display = XOpenDisplay(name);
    if (!display)
        return false;
    XCloseDisplay(display);
    return true;
}

bool ViewXServer::open(bool allowPrivate, std::string& error)
{
    char const* name = std::getenv("DISPLAY");
    if (name && *name)
        mDisplay = XOpenDisplay(name);
    if (mDisplay)
        return true;
    if (!allowPrivate) {
        error = name && *name ? std::string("cannot open X display ") + name : "no X display (DISPLAY is not set)";
        return false;
    }
    if (!startPrivateServer(error))
        return false;
    mDisplay = XOpenDisplay(std::getenv("DISPLAY"));
    if (!mDisplay) {
        error = "cannot connect to the private X server";
        stopPrivateServer();
        return false;
    }
    return true;
}

void ViewXServer::close()
{
    if (mDisplay) {
        XCloseDisplay(mDisplay);
        mDisplay = nullptr;
    }
    stopPrivateServer();
}

bool ViewXServer::startPrivateServer(std::string& error)
{
    int channel[2];
    if (::pipe(channel) != 0) {
        error = std::string("cannot start Xvfb: ") + std::strerror(errno);
        return false;
    }
    pid_t const child = ::fork();
    if (child < 0) {
        error = std::string("cannot start Xvfb: ") + std::strerror(errno);
        ::close(channel[0]);
        ::close(channel[1]);
        return false;
    }
    if (child == 0) {
        // -displayfd: the server picks a free display number and writes it
        // once it accepts connections. -noreset keeps it up between clients.
        ::close(channel[0]);
        int const quiet = ::open("/dev/null", O_RDWR);
        if (quiet >= 0) {
            ::dup2(quiet, 0);
            ::dup2(quiet, 1);
            ::dup2(quiet, 2);
        }
        std::string const fd = std::to_string(channel[1]);
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1920x1200x24", "-nolisten", "tcp",
                 "-noreset", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(channel[1]);
    mServer = child;

    std::string number;
    pollfd wait{channel[0], POLLIN, 0};
    while (number.empty() || number.back() != '\n') {
        if (::poll(&wait, 1, kStartTimeoutMs) <= 0)
            break;
        char buffer[16];
        ssize_t const got = ::read(channel[0], buffer, sizeof buffer);
        if (got <= 0)
            break;
        number.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(channel[0]);
    while (!number.empty() && (number.back() == '\n' || number.back() == ' '))
        number.pop_back();
    if (number.empty()) {
        error = "no X display, and Xvfb could not be started (is the xvfb package installed?)";
        stopPrivateServer();
        return false;
    }
    std::string const name = ":" + number;
    ::setenv("DISPLAY", name.c_str(), 1);
    return true;
}

void ViewXServer::stopPrivateServer()
{
    if (mServer <= 0)
        return;
    ::kill(mServer, SIGTERM);
    int status = 0;
    ::waitpid(mServer, &status, 0);
    mServer = -1;
}

} // namespace Kelvor
