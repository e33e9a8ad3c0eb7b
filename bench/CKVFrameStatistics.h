#pragma once

#include <map>
#include <string>
#include <vector>

namespace Kelvor {

// Per-frame samples of named figures (milliseconds, counts), summarised by
// median and percentiles: on a machine shared with other work the median is
// the figure that stays put from run to run, the mean is not.
class CKVFrameStatistics
{
public:
    void add(std::string const& series, double value);
    std::size_t count(std::string const& series) const;
    // 0 for a series without samples.
    double median(std::string const& series) const;
    // Nearest-rank percentile, p in [0, 100].
    double percentile(std::string const& series, double p) const;
    double mean(std::string const& series) const;
    std::vector<std::string> seriesNames() const;

    // The median of any list, as above; 0 for an empty one. Even counts give
    // the mean of the two middle values.
    static double medianOf(std::vector<double> values);

private:
    std::map<std::string, std::vector<double>> mSeries;
};

} // namespace Kelvor
