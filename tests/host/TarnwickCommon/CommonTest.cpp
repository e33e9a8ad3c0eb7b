#include "TarnwickCommon/Common.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace Kelvor {
namespace {

TEST(Common, ModuleDirectoryHoldsTheLibrary)
{
    CKVAString dir;
    ASSERT_TRUE(Common::getModuleDirectory(dir));
    EXPECT_EQ('/', dir[0]);
    EXPECT_NE('/', dir[dir.length() - 1]);
    EXPECT_TRUE(Common::checkDirectory(dir.c_str()));
    EXPECT_TRUE(Common::checkFile((dir + "/libTarnwickCommon.so").c_str()));
}

TEST(Common, ResourceDirectoryDefaultsBesideTheModuleAndCanBeSet)
{
    CKVAString module;
    ASSERT_TRUE(Common::getModuleDirectory(module));
    CKVAString parent = module.left(static_cast<unsigned int>(module.reverseFind('/')));

    CKVAString defaultDir;
    ASSERT_TRUE(Common::getResourceDirectory(defaultDir));
    EXPECT_TRUE(defaultDir == parent + "/resources" || defaultDir == parent + "/share/tarnwick/resources")
        << defaultDir.c_str();
    EXPECT_EQ(-1, defaultDir.find("..")) << "normalised";

    Common::setResourceDirectory("C:\\data\\res\\");
    CKVAString set;
    ASSERT_TRUE(Common::getResourceDirectory(set));
    EXPECT_STREQ("C:/data/res", set.c_str());

    Common::setResourceDirectory(nullptr);
    CKVAString back;
    ASSERT_TRUE(Common::getResourceDirectory(back));
    EXPECT_EQ(defaultDir, back);
}

TEST(Common, CheckFileTellsFilesFromDirectoriesAndAbsence)
{
    char dirPattern[] = "/tmp/kvcommonXXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(dirPattern));
    std::string const dir = dirPattern;
    std::string const file = dir + "/repnoise.jpg";
    std::ofstream(file) << "x";

    EXPECT_TRUE(Common::checkFile(file.c_str()));
    std::string backslashed = file;
    for (char& c : backslashed) {
        if (c == '/')
            c = '\\';
    }
    EXPECT_TRUE(Common::checkFile(backslashed.c_str()));
    EXPECT_FALSE(Common::checkFile(dir.c_str())) << "a directory is not a file";
    EXPECT_TRUE(Common::checkDirectory(dir.c_str()));
    EXPECT_FALSE(Common::checkFile((dir + "/missing.png").c_str()));
    EXPECT_FALSE(Common::checkFile(""));
    EXPECT_FALSE(Common::checkFile(nullptr));

    std::remove(file.c_str());
    ::rmdir(dir.c_str());
}

TEST(Common, NormalizePath)
{
    EXPECT_STREQ("/a/c", Common::normalizePath("/a/b/../c/").c_str());
    EXPECT_STREQ("/a/b", Common::normalizePath("\\a\\\\.\\b").c_str());
    EXPECT_STREQ("/", Common::normalizePath("/..").c_str());
    EXPECT_STREQ("../x", Common::normalizePath("a/../../x").c_str());
    EXPECT_STREQ(".", Common::normalizePath("a/..").c_str());
    EXPECT_STREQ("", Common::normalizePath(nullptr).c_str());
    EXPECT_STREQ("/build/resources", Common::normalizePath("/build/lib/../resources").c_str());
}

} // namespace
} // namespace Kelvor
