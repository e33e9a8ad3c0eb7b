#pragma once

#include <cstdio>
#include <string>

namespace Kelvor {

// Shows the progress of a model load on one line. On a terminal the line
// is rewritten in place; in a log (not a terminal) a line is written per
// phase and per tenth, so that a log stays short.
class ViewProgressPrinter
{
public:
    explicit ViewProgressPrinter(std::FILE* out);
    ~ViewProgressPrinter();

    void update(double fraction, char const* phase);
    // Ends the progress line, if one is open.
    void finish();

private:
    std::FILE* mOut;
    bool mTerminal;
    bool mOpenLine = false;
    int mLastTenth = -1;
    std::string mLastPhase;
};

} // namespace Kelvor
