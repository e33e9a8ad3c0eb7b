#include "bench/CKVFrameStatistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Kelvor {

void CKVFrameStatistics::add(std::string const& series, double value)
{
    mSeries[series].push_back(value);
}

std::size_t CKVFrameStatistics::count(std::string const& series) const
{
    auto const found = mSeries.find(series);
    return found == mSeries.end() ? 0 : found->second.size();
}

double CKVFrameStatistics::medianOf(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::size_t const half = values.size() / 2;
    std::nth_element(values.begin(), values.begin() + half, values.end());
    double const upper = values[half];
    if (values.size() % 2)
        return upper;
    double const lower = *std::max_element(values.begin(), values.begin() + half);
    return 0.5 * (lower + upper);
}

double CKVFrameStatistics::median(std::string const& series) const
{
    auto const found = mSeries.find(series);
    return found == mSeries.end() ? 0.0 : medianOf(found->second);
}

double CKVFrameStatistics::percentile(std::string const& series, double p) const
{
    auto const found = mSeries.find(series);
    if (found == mSeries.end() || found->second.empty())
        return 0.0;
    std::vector<double> values = found->second;
    std::sort(values.begin(), values.end());
    double const clamped = std::min(100.0, std::max(0.0, p));
    std::size_t rank = static_cast<std::size_t>(std::ceil(clamped / 100.0 * values.size()));
    rank = std::max<std::size_t>(rank, 1);
    return values[rank - 1];
}

double CKVFrameStatistics::mean(std::string const& series) const
{
    auto const found = mSeries.find(series);
    if (found == mSeries.end() || found->second.empty())
        return 0.0;
    return std::accumulate(found->second.begin(), found->second.end(), 0.0) / found->second.size();
}

std::vector<std::string> CKVFrameStatistics::seriesNames() const
{
    std::vector<std::string> names;
    for (auto const& entry : mSeries)
        names.push_back(entry.first);
    return names;
}

} // namespace Kelvor
