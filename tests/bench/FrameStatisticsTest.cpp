#include "bench/CKVFrameStatistics.h"

#include <gtest/gtest.h>

using namespace Kelvor;

TEST(FrameStatisticsTest, MedianOfUnsortedOddAndEvenCounts)
{
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf({}), 0.0);
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf({4.0}), 4.0);
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf({9.0, 1.0, 5.0}), 5.0);
    // Even count: mean of the two middle values, whatever the input order.
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf({10.0, 2.0, 8.0, 4.0}), 6.0);
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf({3.0, 3.0, 1.0, 100.0}), 3.0);
    // One slow frame among many moves the median not at all.
    std::vector<double> frames(101, 10.0);
    frames[50] = 5000.0;
    EXPECT_DOUBLE_EQ(CKVFrameStatistics::medianOf(frames), 10.0);
}

TEST(FrameStatisticsTest, SeriesKeepTheirOwnSamples)
{
    CKVFrameStatistics statistics;
    for (double v : {5.0, 1.0, 4.0, 2.0, 3.0})
        statistics.add("cull", v);
    statistics.add("draw", 7.0);
    EXPECT_EQ(statistics.count("cull"), 5u);
    EXPECT_EQ(statistics.count("draw"), 1u);
    EXPECT_EQ(statistics.count("update"), 0u);
    EXPECT_DOUBLE_EQ(statistics.median("cull"), 3.0);
    EXPECT_DOUBLE_EQ(statistics.median("draw"), 7.0);
    EXPECT_DOUBLE_EQ(statistics.median("update"), 0.0);
    EXPECT_DOUBLE_EQ(statistics.mean("cull"), 3.0);
    EXPECT_EQ(statistics.seriesNames(), (std::vector<std::string>{"cull", "draw"}));
}

TEST(FrameStatisticsTest, NearestRankPercentiles)
{
    CKVFrameStatistics statistics;
    for (int v = 100; v >= 1; --v)
        statistics.add("frame", v);
    EXPECT_DOUBLE_EQ(statistics.percentile("frame", 90.0), 90.0);
    EXPECT_DOUBLE_EQ(statistics.percentile("frame", 95.0), 95.0);
    EXPECT_DOUBLE_EQ(statistics.percentile("frame", 100.0), 100.0);
    EXPECT_DOUBLE_EQ(statistics.percentile("frame", 0.0), 1.0);
    EXPECT_DOUBLE_EQ(statistics.percentile("frame", 150.0), 100.0);
    EXPECT_DOUBLE_EQ(statistics.percentile("missing", 50.0), 0.0);
}
