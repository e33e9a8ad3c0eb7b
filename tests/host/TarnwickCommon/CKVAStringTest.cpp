#include "TarnwickCommon/CKVAString.h"

#include <gtest/gtest.h>

#include <string>

namespace Kelvor {
namespace {

TEST(CKVAString, NullIsEmptyEverywhere)
{
    CKVAString s(nullptr);
    EXPECT_EQ(0u, s.length());
    EXPECT_STREQ("", s.c_str());
    s = "abc";
    s.append(nullptr);
    EXPECT_STREQ("abc", s.c_str());
    s.assign(nullptr);
    EXPECT_TRUE(s.isEmpty());
    EXPECT_TRUE(s == nullptr);
}

TEST(CKVAString, FormatReplacesAndAppendFormatExtends)
{
    CKVAString s("old");
    EXPECT_STREQ("x=3 y=2.50 name", s.format("x=%d y=%.2f %s", 3, 2.5, "name").c_str());
    s.appendFormat("/%03u", 7u);
    EXPECT_STREQ("x=3 y=2.50 name/007", s.c_str());
    EXPECT_EQ(19u, s.length());
}

TEST(CKVAString, FormatHandlesLongTextAndItsOwnContent)
{
    std::string const longText(1000, 'q');
    CKVAString s;
    s.format("<%s>", longText.c_str());
    EXPECT_EQ(1002u, s.length());
    EXPECT_EQ('<', s[0]);
    EXPECT_EQ('>', s[1001]);

    // The argument is the string being formatted.
    CKVAString path("/res");
    path.format("%s/%s", path.c_str(), "repnoise.jpg");
    EXPECT_STREQ("/res/repnoise.jpg", path.c_str());
}

TEST(CKVAString, CopiesAreIndependent)
{
    CKVAString a("first");
    CKVAString b(a);
    b.append("-second");
    EXPECT_STREQ("first", a.c_str());
    EXPECT_STREQ("first-second", b.c_str());
    EXPECT_TRUE(a < b);
    EXPECT_EQ(CKVAString("first-second"), b);
    EXPECT_STREQ("first/x", (a + "/x").c_str());
}

TEST(CKVAString, SearchAndSlice)
{
    CKVAString s(".\\tiles\\a.osgb");
    EXPECT_EQ(1, s.find('\\'));
    EXPECT_EQ(7, s.reverseFind('\\'));
    EXPECT_EQ(8, s.find("a.osgb"));
    EXPECT_EQ(-1, s.find('z'));
    EXPECT_STREQ("tiles", s.mid(2, 5).c_str());
    EXPECT_STREQ("", s.mid(100).c_str());
    EXPECT_EQ(2u, s.replace('\\', '/'));
    EXPECT_STREQ("./tiles/a.osgb", s.c_str());
    EXPECT_EQ('\0', s[1000]);
}

} // namespace
} // namespace Kelvor
