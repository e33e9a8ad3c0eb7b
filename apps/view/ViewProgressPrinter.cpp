#include "apps/view/ViewProgressPrinter.h"

#include <unistd.h>

namespace Kelvor {

ViewProgressPrinter::ViewProgressPrinter(std::FILE* out)
    : mOut(out)
    , mTerminal(out && isatty(fileno(out)))
{
}

ViewProgressPrinter::~ViewProgressPrinter()
{
    finish();
}

void ViewProgressPrinter::update(double fraction, char const* phase)
{
    if (!mOut)
        return;
    fraction = fraction < 0.0 ? 0.0 : (fraction > 1.0 ? 1.0 : fraction);
    std::string const name = phase ? phase : "";
    int const tenth = static_cast<int>(fraction * 10.0);
    int const percent = static_cast<int>(fraction * 100.0 + 0.5);
    if (mTerminal) {
        std::fprintf(mOut, "\rloading %3d%%  %-40s", percent, name.c_str());
        mOpenLine = true;
    } else if (tenth != mLastTenth || name != mLastPhase) {
        std::fprintf(mOut, "loading %3d%%  %s\n", percent, name.c_str());
    }
    std::fflush(mOut);
    mLastTenth = tenth;
    mLastPhase = name;
}

void ViewProgressPrinter::finish()
{
    if (mOut && mOpenLine) {
        std::fputc('\n', mOut);
        std::fflush(mOut);
    }
    mOpenLine = false;
}

} // namespace Kelvor
