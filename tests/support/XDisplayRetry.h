#pragma once

#include <X11/Xlib.h>

#include <chrono>
#include <thread>

namespace Kelvor {

// A test X server starved of CPU (many test programs, few cores) refuses a
// connection now and then; a host retries, and so do the tests, so that a
// busy machine does not look like a broken window.
inline Display* openTestDisplay(char const* name = nullptr)
{
    for (int attempt = 1; attempt <= 8; ++attempt) {
        if (Display* display = XOpenDisplay(name))
            return display;
        std::this_thread::sleep_for(std::chrono::milliseconds(100 * attempt));
    }
    return nullptr;
}

} // namespace Kelvor
