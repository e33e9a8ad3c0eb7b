#include "TileSetFixture.h"

#include "models/CKVOSGBImport.h"
#include "models/CKVTileMeshConverter.h"

#include <osg/Image>
#include <osg/PagedLOD>
#include <osg/Texture2D>

#include <sys/stat.h>

namespace Kelvor {
namespace {

using CKVOSGBImportTest = TileSetFixture;

std::vector<unsigned char> rgba(CKVBasicMaterial const& material)
{
    unsigned char r, g, b, a;
    material.getRGBA(r, g, b, a);
    return {r, g, b, a};
}

osg::ref_ptr<osg::Image> checkerImage(std::string const& fileName)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGB, GL_UNSIGNED_BYTE);
    std::fill(image->data(), image->data() + image->getTotalSizeInBytes(), 200);
    image->setFileName(fileName);
    return image;
}

TEST_F(CKVOSGBImportTest, PagedPyramidIsReadWholeWithRangesAndStandInsForMissingFiles)
{
    // Finest level, two levels down, in a sub-folder named with '\' as tile
    // sets made on other systems name it.
    osg::ref_ptr<osg::Geode> finest = squareNode(2.0f);
    ASSERT_TRUE(writeTile(*finest, "tile/sub/fine.osgb"));

    osg::ref_ptr<osg::PagedLOD> middle = new osg::PagedLOD;
    middle->setRangeMode(osg::LOD::PIXEL_SIZE_ON_SCREEN);
    middle->addChild(squareNode(1.0f).get(), 0.0f, 400.0f);
    middle->setFileName(1, "fine.osgb");
    middle->setRange(1, 400.0f, 1e6f);
    ASSERT_TRUE(writeTile(*middle, "tile/sub/middle.osgb"));

    osg::ref_ptr<osg::PagedLOD> root = new osg::PagedLOD;
    root->setRangeMode(osg::LOD::DISTANCE_FROM_EYE_POINT);
    root->addChild(squareNode(0.0f).get(), 100.0f, 1e6f);
    root->setFileName(1, "sub\\middle.osgb");
    root->setRange(1, 50.0f, 100.0f);
    root->setFileName(2, "missing.osgb");
    root->setRange(2, 0.0f, 50.0f);
    ASSERT_TRUE(writeTile(*root, "tile/root.osgb"));

    CKVOSGBImport importer;
    kv_shared_ptr<CKVRenderLOD> lod = importer.loadTile((mRoot + "\\tile\\root.osgb").c_str());
    ASSERT_TRUE(lod.valid());
    EXPECT_EQ(lod->getLoadMode(), CKVRenderLOD::kEyeDistance);
    EXPECT_TRUE(lod->getCullingChild());
    ASSERT_EQ(lod->getNumChildLOD(), 3u);
    float const expected[3][2] = {{100.0f, 1e6f}, {50.0f, 100.0f}, {0.0f, 50.0f}};
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_FLOAT_EQ(lod->getChildLOD(i)->getMinDistance(), expected[i][0]) << i;
        EXPECT_FLOAT_EQ(lod->getChildLOD(i)->getMaxDistance(), expected[i][1]) << i;
    }
    EXPECT_FLOAT_EQ(firstX(*lod->getChildLOD(0)), 0.0f);

    // The middle level came in from its file, and its own file child too.
    CKVRenderLOD const& middleLOD = *lod->getChildLOD(1);
    EXPECT_EQ(middleLOD.getLoadMode(), CKVRenderLOD::kPixelSize);
    ASSERT_EQ(middleLOD.getNumChildLOD(), 2u);
    EXPECT_FLOAT_EQ(firstX(*middleLOD.getChildLOD(0)), 1.0f);
    EXPECT_FLOAT_EQ(firstX(*middleLOD.getChildLOD(1)), 2.0f);
    EXPECT_FLOAT_EQ(middleLOD.getChildLOD(1)->getMinDistance(), 400.0f);

    // The missing file leaves an empty level in its range's place.
    CKVRenderLOD const& missing = *lod->getChildLOD(2);
    EXPECT_EQ(missing.getNumGeometry(), 0u);
    EXPECT_EQ(missing.getNumChildLOD(), 0u);
}

TEST_F(CKVOSGBImportTest, TileNamingItselfIsReadOnce)
{
    osg::ref_ptr<osg::PagedLOD> root = new osg::PagedLOD;
    root->addChild(squareNode(0.0f).get(), 10.0f, 1e6f);
    root->setFileName(1, "loop.osgb");
    root->setRange(1, 0.0f, 10.0f);
    ASSERT_TRUE(writeTile(*root, "loop.osgb"));

    CKVOSGBImport importer;
    kv_shared_ptr<CKVRenderLOD> lod = importer.loadTile(path("loop.osgb").c_str());
    ASSERT_TRUE(lod.valid());
    ASSERT_EQ(lod->getNumChildLOD(), 2u);
    EXPECT_EQ(lod->getChildLOD(1)->getNumChildLOD(), 0u);
}

TEST_F(CKVOSGBImportTest, GroupsBecomeChildLevelsAndMaterialsComeDownTheTree)
{
    osg::ref_ptr<osg::Group> root = new osg::Group;
    setColour(*root, osg::Vec4(1.0f, 0.0f, 0.5f, 1.0f));
    osg::ref_ptr<osg::Geode> plain = squareNode(0.0f);
    osg::ref_ptr<osg::Geode> textured = squareNode(1.0f);
    setColour(*textured, osg::Vec4(0.0f, 1.0f, 0.0f, 0.5f));
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(checkerImage("checker.png").get());
    textured->getOrCreateStateSet()->setTextureAttribute(1, texture.get());
    root->addChild(plain.get());
    root->addChild(textured.get());
    root->addChild(square(5.0f).get());
    ASSERT_TRUE(writeTile(*root, "Tile/Tile.osgb"));

    CKVOSGBImport importer;
    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(importer.readModel(path("Tile/Tile.osgb").c_str(), model));
    ASSERT_TRUE(model.valid());
    ASSERT_EQ(model->getNumLOD(), 1u);
    CKVRenderLOD const& lod = *model->getLOD(0);

    // The two geodes are groups and get levels of their own; the bare
    // geometry lands in the root's level.
    ASSERT_EQ(lod.getNumChildLOD(), 2u);
    ASSERT_EQ(lod.getNumGeometry(), 1u);
    EXPECT_FLOAT_EQ(meshOf(lod, 0)->getPoints()[0].x, 5.0f);

    CKVRenderLOD::GeometryEntry const& inherited = lod.getChildLOD(0)->getGeometry(0);
    EXPECT_EQ(rgba(*inherited.material), (std::vector<unsigned char>{255, 0, 127, 255}));
    EXPECT_STREQ(inherited.material->getTexture(), "");

    CKVRenderLOD::GeometryEntry const& own = lod.getChildLOD(1)->getGeometry(0);
    EXPECT_EQ(rgba(*own.material), (std::vector<unsigned char>{0, 255, 0, 127}));
    std::string const unpacked = path("Tile/checker.png");
    EXPECT_EQ(std::string(own.material->getTexture()), unpacked);
    EXPECT_TRUE(osgDB::fileExists(unpacked)) << "the embedded image is written beside the tile";

    // A second import finds the file and leaves it as it is.
    ASSERT_TRUE(writeText("Tile/checker.png", "kept"));
    ASSERT_TRUE(importer.readModel(path("Tile/Tile.osgb").c_str(), model));
    EXPECT_EQ(std::string(model->getLOD(0)->getChildLOD(1)->getGeometry(0).material->getTexture()), unpacked);
    struct stat info {};
    ASSERT_EQ(::stat(unpacked.c_str(), &info), 0);
    EXPECT_EQ(info.st_size, 4);

    // The stack is back at its default material: a tile without materials
    // read by the same importer is white, not the colour of the last tile.
    ASSERT_TRUE(writeSquareTile("bare.osgb", 0.0f));
    ASSERT_TRUE(importer.readModel(path("bare.osgb").c_str(), model));
    CKVRenderLOD const& bare = *model->getLOD(0);
    ASSERT_EQ(bare.getNumChildLOD(), 0u);
    ASSERT_EQ(bare.getNumGeometry(), 1u);
    EXPECT_EQ(rgba(*bare.getGeometry(0).material), (std::vector<unsigned char>{255, 255, 255, 255}));
}

TEST_F(CKVOSGBImportTest, FilesThatDoNotReadGiveNoModel)
{
    ASSERT_TRUE(writeText("garbage.osgb", "not a tile"));
    CKVOSGBImport importer;
    for (std::string const& file : {path("absent.osgb"), path("garbage.osgb"), std::string()}) {
        kv_shared_ptr<CKVModelBase> model(new CKVModelBase);
        EXPECT_FALSE(importer.readModel(file.c_str(), model)) << file;
        EXPECT_FALSE(model.valid()) << file;
    }
    EXPECT_FALSE(importer.loadTile(nullptr).valid());
}

TEST(CKVTileMeshConverterTest, TakesTheFirstTriangleListAndOnlyPerPointArrays)
{
    osg::ref_ptr<osg::Geometry> geometry = TileSetFixture::square(0.0f);
    geometry->removePrimitiveSet(0);
    // A strip first, then 16-bit triangles, then a second list that is ignored.
    osg::ref_ptr<osg::DrawArrays> strip = new osg::DrawArrays(GL_LINE_STRIP, 0, 4);
    geometry->addPrimitiveSet(strip.get());
    osg::ref_ptr<osg::DrawElementsUShort> shorts = new osg::DrawElementsUShort(GL_TRIANGLES);
    for (unsigned short i : {3, 2, 1, 0, 1, 2, 3})
        shorts->push_back(i);
    geometry->addPrimitiveSet(shorts.get());
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    // Normals bound per primitive: one fewer than the points.
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array(3);
    geometry->setNormalArray(normals.get(), osg::Array::BIND_PER_PRIMITIVE_SET);
    osg::ref_ptr<osg::Vec2Array> uv = new osg::Vec2Array(4);
    (*uv)[2] = osg::Vec2(0.25f, 0.75f);
    geometry->setTexCoordArray(0, uv.get());

    kv_shared_ptr<CKVMesh> mesh = CKVTileMeshConverter::convert(*geometry);
    ASSERT_TRUE(mesh.valid());
    EXPECT_EQ(mesh->getNumPoints(), 4u);
    // Seven indices make two whole triangles; the rest is dropped.
    ASSERT_EQ(mesh->getNumTriangles(), 2u);
    EXPECT_EQ(mesh->getTriangles()[0].x, 3u);
    EXPECT_EQ(mesh->getTriangles()[1].z, 2u);
    kv_shared_ptr<CKVRenderGeometryData> data = mesh->getRenderData();
    ASSERT_TRUE(data.valid());
    EXPECT_EQ(data->getNormalsArray(), nullptr);
    ASSERT_NE(data->getUVArray(), nullptr);
    EXPECT_FLOAT_EQ(data->getUVArray()[2].y, 0.75f);
}

TEST(CKVTileMeshConverterTest, GeometryWithoutTrianglesGivesNoMesh)
{
    osg::ref_ptr<osg::Geometry> lines = TileSetFixture::square(0.0f);
    lines->setPrimitiveSet(0, new osg::DrawArrays(GL_LINE_STRIP, 0, 4));
    EXPECT_FALSE(CKVTileMeshConverter::convert(*lines).valid());

    osg::ref_ptr<osg::Geometry> noVertices = TileSetFixture::square(0.0f);
    noVertices->setVertexArray(nullptr);
    EXPECT_FALSE(CKVTileMeshConverter::convert(*noVertices).valid());

    // Plain vertex runs count as triangle lists, with their own numbering.
    osg::ref_ptr<osg::Geometry> run = TileSetFixture::square(0.0f);
    run->setPrimitiveSet(0, new osg::DrawArrays(GL_TRIANGLES, 1, 3));
    kv_shared_ptr<CKVMesh> mesh = CKVTileMeshConverter::convert(*run);
    ASSERT_TRUE(mesh.valid());
    ASSERT_EQ(mesh->getNumTriangles(), 1u);
    EXPECT_EQ(mesh->getTriangles()[0].x, 1u);
    EXPECT_EQ(mesh->getTriangles()[0].z, 3u);
}

} // namespace
} // namespace Kelvor
