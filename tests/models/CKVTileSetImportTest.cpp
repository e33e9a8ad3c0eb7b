#include "TileSetFixture.h"

#include "models/CKVLfpImport.h"
#include "models/CKVOSGBImport.h"
#include "models/CKVS3CImport.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickStream/CKVModelIOManager.h"

namespace Kelvor {
namespace {

using CKVS3CImportTest = TileSetFixture;
using CKVLfpImportTest = TileSetFixture;

std::string backslashed(std::string path)
{
    for (char& c : path) {
        if (c == '/')
            c = '\\';
    }
    return path;
}

TEST_F(CKVS3CImportTest, TileFoldersOfDataComeInSortedAndDottedNamesAreSkipped)
{
    ASSERT_TRUE(writeSquareTile("set/Data/Tile_B/Tile_B.osgb", 2.0f));
    ASSERT_TRUE(writeSquareTile("set/Data/tile_c/tile_c.osgb", 3.0f));
    ASSERT_TRUE(writeSquareTile("set/Data/Tile_A/Tile_A.osgb", 1.0f));
    ASSERT_TRUE(writeSquareTile("set/Data/Tile.D/Tile.D.osgb", 4.0f));
    ASSERT_TRUE(writeSquareTile("set/Data/Tile_E/other.osgb", 5.0f));
    ASSERT_TRUE(writeText("set/Data/notes.txt", "not a tile"));

    // The descriptor is never opened; only its folder counts.
    CKVS3CImport importer;
    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(importer.readModel(backslashed(path("set/set.s3c")).c_str(), model));
    ASSERT_TRUE(model.valid());
    EXPECT_EQ(tileXs(*model), (std::vector<float>{1.0f, 2.0f, 3.0f}));
}

TEST_F(CKVS3CImportTest, NoTilesGiveNoModel)
{
    CKVS3CImport importer;
    kv_shared_ptr<CKVModelBase> model;
    EXPECT_FALSE(importer.readModel(path("none/none.s3c").c_str(), model)) << "no Data folder";
    EXPECT_FALSE(model.valid());

    ASSERT_TRUE(writeText("empty/Data/readme.txt", "only this"));
    EXPECT_FALSE(importer.readModel(path("empty/empty.s3c").c_str(), model));
    EXPECT_FALSE(model.valid());

    ASSERT_TRUE(writeText("broken/Data/Tile_A/Tile_A.osgb", "not a tile"));
    EXPECT_FALSE(importer.readModel(path("broken/broken.s3c").c_str(), model));
    EXPECT_FALSE(importer.readModel(nullptr, model));
}

TEST_F(CKVLfpImportTest, NodeValuesNameTilesRelativeToTheDescriptorInListOrder)
{
    ASSERT_TRUE(writeSquareTile("set/Tile_1/Tile_1.osgb", 1.0f));
    ASSERT_TRUE(writeSquareTile("set/Tile_2/Tile_2.osgb", 2.0f));
    ASSERT_TRUE(writeText("set/set.lfp",
                          "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                          "<DataDefine>\n"
                          "  <SRS>EPSG:4326</SRS>\n"
                          "  <NodeList count=\"7\">\n"
                          "    <Node>Tile_2/Tile_2.osgb</Node>\n"
                          "    <Node>.\\Tile_1\\Tile_1.osgb</Node>\n"
                          "    <Node></Node>\n"
                          "    <Node>Missing\\Missing.osgb</Node>\n"
                          "    <Other>Tile_2/Tile_2.osgb</Other>\n"
                          "    <Node>Tile_1\\Tile_1.osgb</Node>\n"
                          "    <Node>/Tile_1\\Tile_1.osgb</Node>\n"
                          "    <Node>./Tile_2/Tile_2.osgb</Node>\n"
                          "  </NodeList>\n"
                          "</DataDefine>\n"));

    CKVLfpImport importer;
    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(importer.readModel(backslashed(path("set/set.lfp")).c_str(), model));
    ASSERT_TRUE(model.valid());
    EXPECT_EQ(tileXs(*model), (std::vector<float>{2.0f, 1.0f, 1.0f, 1.0f, 2.0f}));
}

TEST_F(CKVLfpImportTest, DescriptorsWithoutTilesGiveNoModel)
{
    ASSERT_TRUE(writeSquareTile("Tile_1/Tile_1.osgb", 1.0f));
    struct Case
    {
        char const* name;
        char const* text;
    };
    Case const cases[] = {
        {"notxml.lfp", "Tile_1/Tile_1.osgb"},
        {"unclosed.lfp", "<DataDefine><NodeList><Node>Tile_1/Tile_1.osgb</Node>"},
        {"noroot.lfp", "<NodeList><Node>Tile_1/Tile_1.osgb</Node></NodeList>"},
        {"nolist.lfp", "<DataDefine><Node>Tile_1/Tile_1.osgb</Node></DataDefine>"},
        {"missing.lfp", "<DataDefine><NodeList><Node>Tile_9/Tile_9.osgb</Node></NodeList></DataDefine>"},
    };
    CKVLfpImport importer;
    for (Case const& c : cases) {
        ASSERT_TRUE(writeText(c.name, c.text));
        kv_shared_ptr<CKVModelBase> model(new CKVModelBase);
        EXPECT_FALSE(importer.readModel(path(c.name).c_str(), model)) << c.name;
        EXPECT_FALSE(model.valid()) << c.name;
    }
    kv_shared_ptr<CKVModelBase> model;
    EXPECT_FALSE(importer.readModel(path("absent.lfp").c_str(), model));
}

TEST(CKVTileImporterRegistrationTest, LoadedLibraryServesTheSixExtensions)
{
    struct Case
    {
        char const* key;
        CKVRuntimeClass const* kind;
    };
    Case const cases[] = {
        {"osgb", CKVOSGBImport::desc()}, {".osgb", CKVOSGBImport::desc()}, {"s3c", CKVS3CImport::desc()},
        {".s3c", CKVS3CImport::desc()},  {"lfp", CKVLfpImport::desc()},    {".lfp", CKVLfpImport::desc()},
    };
    for (Case const& c : cases) {
        kv_shared_ptr<CKVModelImportExport> importer = CKVModelIOManager::instance()->findImportExport(c.key);
        ASSERT_TRUE(importer.valid()) << c.key;
        EXPECT_TRUE(importer->isKindOf(c.kind)) << c.key;
    }
    // One object per format, behind both of its keys.
    EXPECT_EQ(CKVModelIOManager::instance()->findImportExport("osgb"),
              CKVModelIOManager::instance()->findImportExport(".osgb"));

    for (char const* name : {"CKVOSGBImport", "CKVS3CImport", "CKVLfpImport"}) {
        CKVRuntimeClass const* record = CKVRuntimeClass::find(name);
        ASSERT_NE(record, nullptr) << name;
        CKVObject* object = record->createObject();
        ASSERT_NE(object, nullptr) << name;
        EXPECT_TRUE(object->isKindOf(CKVModelImportExport::desc())) << name;
        EXPECT_STREQ(object->isA()->name(), name);
        delete object;
    }
}

} // namespace
} // namespace Kelvor
