#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVArray.h"
#include "TarnwickCommon/CKVAtomic.h"
#include "TarnwickCommon/CKVVec.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Kelvor {
namespace {

TEST(CKVArray, HoldsCopiesInOrder)
{
    CKVArray<CKVAString, ArrayObjectOperator<CKVAString>> textures;
    CKVAString name("grass.png");
    EXPECT_EQ(0u, textures.add(name));
    EXPECT_EQ(1u, textures.add(CKVAString("rock.dds")));
    name = "changed";
    ASSERT_EQ(2u, textures.size());
    EXPECT_STREQ("grass.png", textures[0].c_str());
    EXPECT_EQ(1, textures.find(CKVAString("rock.dds")));
    EXPECT_EQ(-1, textures.find(CKVAString("snow.dds")));
    EXPECT_TRUE(textures.removeAt(0));
    EXPECT_FALSE(textures.removeAt(5));
    EXPECT_STREQ("rock.dds", textures[0].c_str());
    textures.clear();
    EXPECT_TRUE(textures.isEmpty());
}

TEST(CKVVec, MembersAreAdjacentAndZeroByDefault)
{
    static_assert(sizeof(CKVVec2<float>) == 2 * sizeof(float), "packed");
    static_assert(sizeof(CKVVec3<unsigned int>) == 3 * sizeof(unsigned int), "packed");
    static_assert(sizeof(CKVVec4<float>) == 4 * sizeof(float), "packed");
    CKVVec4<float> plane;
    EXPECT_EQ(0.0f, plane.w);
    CKVVec3<int> values[2] = {CKVVec3<int>(1, 2, 3), CKVVec3<int>(4, 5, 6)};
    int const* raw = &values[0].x;
    EXPECT_EQ(5, raw[4]);
}

TEST(CKVAtomic, CountsAcrossThreads)
{
    CKVAtomic counter;
    EXPECT_EQ(0u, counter.getValue());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&counter] {
            for (int i = 0; i < 1000; ++i)
                counter.inCrease();
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(4000u, counter.getValue());
    EXPECT_EQ(3999u, counter.deCrease());
}

} // namespace
} // namespace Kelvor
