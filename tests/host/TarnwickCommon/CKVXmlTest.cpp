#include "TarnwickCommon/CKVXml.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace Kelvor {
namespace {

// A descriptor of the kind the tile-set import reads.
char const* const kTileList = R"(<?xml version="1.0" encoding="utf-8"?>
<DataDefine>
  <Version>2</Version>
  <NodeList>
    <Node>.\Data\Tile_1\Tile_1.osgb</Node>
    <Other>ignored</Other>
    <Node><![CDATA[Data/Tile_2/Tile_2.osgb]]></Node>
    <Node>Data/a&amp;b.osgb</Node>
    <Node/>
  </NodeList>
</DataDefine>
)";

class CKVXmlFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/kvxmlXXXXXX";
        int fd = ::mkstemp(pattern);
        ASSERT_GE(fd, 0);
        ::close(fd);
        mPath = pattern;
    }
    void TearDown() override { std::remove(mPath.c_str()); }

    void write(char const* text)
    {
        std::ofstream out(mPath, std::ios::binary);
        out << text;
    }

    std::string mPath;
};

TEST_F(CKVXmlFile, ReadsNamedChildrenInOrder)
{
    write(kTileList);
    xml_document doc;
    xml_parse_result result = doc.load_file(mPath.c_str(), 116, static_cast<xml_encoding>(0));
    ASSERT_TRUE(static_cast<bool>(result)) << result.description();

    xml_node list = doc.child("DataDefine").child("NodeList");
    ASSERT_FALSE(list.empty());
    std::vector<std::string> values;
    for (xml_named_node_iterator it = list.children("Node").begin(); it != list.children("Node").end(); ++it)
        values.push_back((*it).child_value());

    ASSERT_EQ(4u, values.size());
    EXPECT_EQ(".\\Data\\Tile_1\\Tile_1.osgb", values[0]);
    EXPECT_EQ("Data/Tile_2/Tile_2.osgb", values[1]) << "CDATA is kept with the default options";
    EXPECT_EQ("Data/a&b.osgb", values[2]) << "escapes are expanded";
    EXPECT_EQ("", values[3]);
    EXPECT_STREQ("2", doc.child("DataDefine").child_value("Version"));
    EXPECT_STREQ("DataDefine", doc.document_element().name());
}

TEST_F(CKVXmlFile, MissingPartsGiveEmptyNodesNotCrashes)
{
    write(kTileList);
    xml_document doc;
    ASSERT_TRUE(static_cast<bool>(doc.load_file(mPath.c_str())));
    xml_node missing = doc.child("Nope").child("Deeper");
    EXPECT_TRUE(missing.empty());
    EXPECT_STREQ("", missing.child_value());
    EXPECT_TRUE(missing.children("Node").empty());
    int count = 0;
    for (xml_node const& node : doc.child("DataDefine").children("Absent")) {
        (void)node;
        ++count;
    }
    EXPECT_EQ(0, count);
}

TEST_F(CKVXmlFile, FailuresReportFalse)
{
    write("<DataDefine><NodeList></DataDefine>");
    xml_document doc;
    xml_parse_result bad = doc.load_file(mPath.c_str(), parse_default, encoding_auto);
    EXPECT_FALSE(static_cast<bool>(bad));
    EXPECT_GT(bad.offset, 0);

    EXPECT_FALSE(static_cast<bool>(doc.load_file("/no/such/dir/file.lfp")));
    EXPECT_FALSE(static_cast<bool>(doc.load_file(nullptr)));
    EXPECT_TRUE(doc.child("DataDefine").empty()) << "a failed load leaves no tree";
}

TEST_F(CKVXmlFile, AcceptsBackslashPaths)
{
    write(kTileList);
    std::string windowsStyle = mPath;
    for (char& c : windowsStyle) {
        if (c == '/')
            c = '\\';
    }
    xml_document doc;
    EXPECT_TRUE(static_cast<bool>(doc.load_file(windowsStyle.c_str(), 116, encoding_auto)));
}

TEST(CKVXml, LoadsFromMemory)
{
    xml_document doc;
    ASSERT_TRUE(static_cast<bool>(doc.load_string("<a><b k='v'>1</b><b>2</b></a>")));
    xml_node first = doc.child("a").child("b");
    EXPECT_STREQ("v", first.attribute_value("k"));
    EXPECT_STREQ("2", first.next_sibling("b").child_value());
    EXPECT_TRUE(first.next_sibling("b").next_sibling("b").empty());
}

} // namespace
} // namespace Kelvor
