#include "apps/ifc/IfcProductTable.h"
#include "apps/view/ViewContentBounds.h"
#include "apps/view/ViewModelLoader.h"
#include "apps/view/ViewModelSceneBuilder.h"
#include "apps/view/ViewOsgFileImporter.h"
#include "apps/view/ViewPickReporter.h"
#include "apps/view/ViewProceduralBuilding.h"

#include "AppTestFiles.h"
#include "MemoryBackendTest.h"

#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVSelectionResult.h"
#include "TarnwickRender/CKVTransformState.h"
#include "TarnwickStream/CKVModelIOManager.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

using namespace Kelvor;
using apptest::tempPath;

namespace {

class ViewContentTest : public apptest::MemoryBackendTest
{
};

void expectPoint(CKVPoint3D const& actual, double x, double y, double z, double tolerance = 1e-5)
{
    EXPECT_NEAR(actual.x, x, tolerance);
    EXPECT_NEAR(actual.y, y, tolerance);
    EXPECT_NEAR(actual.z, z, tolerance);
}

} // namespace

TEST_F(ViewContentTest, BuiltInBuildingBecomesColouredNodesWithTheHousesExtent)
{
    kv_shared_ptr<CKVModelBase> model = ViewProceduralBuilding::build();
    ViewContent content;
    ViewModelSceneBuilder builder;
    ASSERT_TRUE(builder.build(*model, content)) << builder.getError();
    // Three slabs, four walls, fifteen panes and a door; 12 triangles each.
    EXPECT_EQ(content.elements, 23u);
    EXPECT_EQ(content.triangles, 23u * 12u);
    ASSERT_TRUE(content.box.valid());
    // The roof's overhang and the ground slab bound it.
    expectPoint(content.box.minPt(), -0.6, -0.6, -0.25);
    expectPoint(content.box.maxPt(), 12.6, 9.6, 6.8);

    // Every shape node carries its material, and glass is sorted as transparent.
    CKVSceneNode const* level = content.root->getChildNode(0);
    ASSERT_NE(level, nullptr);
    unsigned int transparent = 0;
    for (unsigned int i = 0; i < level->getNumChildNode(); ++i) {
        auto const* state = static_cast<CKVMaterialState const*>(
            level->getChildNode(i)->getStateSet()->getState(CKVSceneNodeState::kMaterial));
        ASSERT_NE(state, nullptr);
        ASSERT_NE(state->getMaterial(), nullptr);
        transparent += state->getMaterial()->getSortTransparency() ? 1 : 0;
        EXPECT_EQ(level->getChildNode(i)->getNumRenderObject(), 1u);
    }
    EXPECT_EQ(transparent, 15u);
}

// Two boxes whose faces lie in one plane, face the same way and overlap
// are drawn at the same depth: the picture flickers between them.
TEST(ViewProceduralBuildingTest, NoTwoPartsShareAVisibleFace)
{
    kv_shared_ptr<CKVModelBase> model = ViewProceduralBuilding::build();
    CKVRenderLOD const* level = model->getLOD(0);
    ASSERT_NE(level, nullptr);
    struct Box
    {
        float lo[3] = {1e30f, 1e30f, 1e30f};
        float hi[3] = {-1e30f, -1e30f, -1e30f};
    };
    std::vector<Box> boxes;
    for (unsigned int i = 0; i < level->getNumGeometry(); ++i) {
        auto const& mesh = static_cast<CKVMesh const&>(*level->getGeometry(i).geometry);
        Box box;
        for (unsigned int p = 0; p < mesh.getNumPoints(); ++p) {
            float const* point = &mesh.getPoints()[p].x;
            for (int axis = 0; axis < 3; ++axis) {
                box.lo[axis] = std::min(box.lo[axis], point[axis]);
                box.hi[axis] = std::max(box.hi[axis], point[axis]);
            }
        }
        boxes.push_back(box);
    }
    auto overlap = [](Box const& a, Box const& b, int axis) {
        for (int other = 0; other < 3; ++other) {
            if (other != axis && std::min(a.hi[other], b.hi[other]) <= std::max(a.lo[other], b.lo[other]))
                return false;
        }
        return true;
    };
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        for (std::size_t j = i + 1; j < boxes.size(); ++j) {
            for (int axis = 0; axis < 3; ++axis) {
                bool const sameLow = boxes[i].lo[axis] == boxes[j].lo[axis];
                bool const sameHigh = boxes[i].hi[axis] == boxes[j].hi[axis];
                EXPECT_FALSE((sameLow || sameHigh) && overlap(boxes[i], boxes[j], axis))
                    << "parts " << i << " and " << j << " share a face across axis " << axis;
            }
        }
    }
}

// Shaped as the tile-set importers give it: the parent chooses among its
// children by its own mode, and each child holds only its range.
TEST_F(ViewContentTest, LevelRangesBecomeCullingStatesAndEmptyModelsAreRefused)
{
    kv_shared_ptr<CKVRenderLOD> parent(new CKVRenderLOD);
    parent->setLoadMode(CKVRenderLOD::kPixelSize);
    parent->setCullingChild(true);
    float const ranges[2][2] = {{0.0f, 100.0f}, {100.0f, 1.0e6f}};
    for (auto const& range : ranges) {
        kv_shared_ptr<CKVRenderLOD> child(new CKVRenderLOD);
        child->setLoadDistance(range[0], range[1]);
        child->addGeometry(nullptr, ViewProceduralBuilding::box(0, 0, 0, 1, 1, 1).get());
        parent->addChildLOD(child.get());
    }
    kv_shared_ptr<CKVModelBase> model(new CKVModelBase);
    model->addLOD(parent.get());

    ViewContent content;
    ViewModelSceneBuilder builder;
    ASSERT_TRUE(builder.build(*model, content)) << builder.getError();
    CKVSceneNode const* parentNode = content.root->getChildNode(0);
    ASSERT_NE(parentNode, nullptr);
    auto const* parentCulling =
        static_cast<CKVCullingState const*>(parentNode->getStateSet()->getState(CKVSceneNodeState::kCulling));
    ASSERT_NE(parentCulling, nullptr);
    EXPECT_TRUE(parentCulling->getCullingChild());
    EXPECT_EQ(parentCulling->getCullingMode(), CKVRenderLOD::kPixelSize);
    ASSERT_EQ(parentNode->getNumChildNode(), 2u);
    for (unsigned int i = 0; i < 2; ++i) {
        auto const* culling = static_cast<CKVCullingState const*>(
            parentNode->getChildNode(i)->getStateSet()->getState(CKVSceneNodeState::kCulling));
        ASSERT_NE(culling, nullptr) << "level " << i << " would be drawn at every range";
        EXPECT_FLOAT_EQ(culling->getMinDistance(), ranges[i][0]);
        EXPECT_FLOAT_EQ(culling->getMaxDistance(), ranges[i][1]);
    }
    CKVSceneNode const* nearNode = parentNode->getChildNode(0);
    // A shape without material gets the default one rather than none.
    ASSERT_EQ(nearNode->getNumChildNode(), 1u);
    EXPECT_NE(nearNode->getChildNode(0)->getStateSet()->getState(CKVSceneNodeState::kMaterial), nullptr);

    kv_shared_ptr<CKVModelBase> empty(new CKVModelBase);
    kv_shared_ptr<CKVRenderLOD> nothing(new CKVRenderLOD);
    nothing->addGeometry(nullptr, new CKVMesh);
    empty->addLOD(nothing.get());
    ViewContent none;
    EXPECT_FALSE(builder.build(*empty, none));
    EXPECT_FALSE(none.root.valid());
    EXPECT_FALSE(builder.getError().empty());
}

TEST_F(ViewContentTest, BoundsFollowInstancesAndNodeTransformsBeforeAnyPacking)
{
    kv_shared_ptr<CKVSceneNode> root(CKVRenderCallback::createSceneNode());
    kv_shared_ptr<CKVSceneNode> moved(CKVRenderCallback::createSceneNode());
    kv_shared_ptr<CKVTransformState> transform(new CKVTransformState);
    transform->setTransformMode(CKVTransformState::kMatrix);
    transform->setMatrix(CKVMatrix3D::translation(CKVVector3D(0.0, 0.0, 100.0)));
    moved->getStateSet()->addState(transform.get());

    // A unit square shape placed twice: at x = 10 and x = -5.
    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    kv_shared_ptr<CKVLogicBufferGeometry> shape(new CKVLogicBufferGeometry);
    float const square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    unsigned int const indices[] = {0, 1, 2, 0, 2, 3};
    shape->setVertexData(CKVVertexBufferAttribute::kVertex, square, 12);
    shape->setIndexData(indices, 6);
    kv_shared_ptr<CKVLogicBufferGeometry> first(new CKVLogicBufferGeometry);
    first->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(10.0, 0.0, 0.0)));
    kv_shared_ptr<CKVLogicBufferGeometry> second(new CKVLogicBufferGeometry);
    second->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(-5.0, 0.0, 0.0)));
    for (auto* buffer : {shape.get(), first.get(), second.get()})
        ASSERT_TRUE(geometry->addLogicBuffer(buffer));
    ASSERT_TRUE(moved->addRenderObject(geometry.get()));
    ASSERT_TRUE(root->addChildNode(moved.get()));

    CKVBndBox const box = ViewContentBounds::compute(*root);
    ASSERT_TRUE(box.valid());
    expectPoint(box.minPt(), -5.0, 0.0, 100.0);
    expectPoint(box.maxPt(), 11.0, 1.0, 100.0);
    kv_shared_ptr<CKVSceneNode> const empty(CKVRenderCallback::createSceneNode());
    EXPECT_FALSE(ViewContentBounds::compute(*empty).valid());
}

TEST_F(ViewContentTest, OpenSceneGraphFilesArriveInWorldCoordinatesWithTheirColours)
{
    // A red triangle under a transform, and a triangle strip in the colour
    // of its first vertex.
    osg::ref_ptr<osg::Geometry> triangle = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> points = new osg::Vec3Array;
    points->push_back(osg::Vec3(0, 0, 0));
    points->push_back(osg::Vec3(1, 0, 0));
    points->push_back(osg::Vec3(0, 1, 0));
    triangle->setVertexArray(points);
    triangle->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    osg::ref_ptr<osg::Material> red = new osg::Material;
    red->setDiffuse(osg::Material::FRONT_AND_BACK, osg::Vec4(1, 0, 0, 1));
    osg::ref_ptr<osg::Geode> redGeode = new osg::Geode;
    redGeode->addDrawable(triangle);
    redGeode->getOrCreateStateSet()->setAttribute(red);
    osg::ref_ptr<osg::MatrixTransform> placed = new osg::MatrixTransform(osg::Matrix::translate(100, 0, 5));
    placed->addChild(redGeode);

    osg::ref_ptr<osg::Geometry> strip = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> stripPoints = new osg::Vec3Array;
    for (int i = 0; i < 4; ++i)
        stripPoints->push_back(osg::Vec3(float(i % 2), float(i / 2), -1.0f));
    strip->setVertexArray(stripPoints);
    osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array;
    colours->push_back(osg::Vec4(0, 0, 1, 0.5f));
    strip->setColorArray(colours, osg::Array::BIND_OVERALL);
    strip->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_STRIP, 0, 4));
    osg::ref_ptr<osg::Geode> blueGeode = new osg::Geode;
    blueGeode->addDrawable(strip);

    osg::ref_ptr<osg::Group> scene = new osg::Group;
    scene->addChild(placed);
    scene->addChild(blueGeode);
    std::string const path = tempPath("scene.osgt");
    ASSERT_TRUE(osgDB::writeNodeFile(*scene, path));

    // Through the registry, as the viewer loads it.
    ViewModelLoader::registerOsgFormats();
    kv_shared_ptr<CKVModelImportExport> importer = CKVModelIOManager::instance()->findByPath(path.c_str());
    ASSERT_TRUE(importer.valid());
    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(importer->readModel(path.c_str(), model));
    std::remove(path.c_str());
    ASSERT_EQ(model->getNumLOD(), 1u);
    CKVRenderLOD const* level = model->getLOD(0);
    ASSERT_EQ(level->getNumGeometry(), 2u);
    bool sawRed = false;
    bool sawBlue = false;
    for (unsigned int i = 0; i < level->getNumGeometry(); ++i) {
        CKVRenderLOD::GeometryEntry const& entry = level->getGeometry(i);
        ASSERT_TRUE(entry.geometry->isKindOf(CKVMesh::desc()));
        auto const& mesh = static_cast<CKVMesh const&>(*entry.geometry);
        unsigned char r, g, b, a;
        entry.material->getRGBA(r, g, b, a);
        if (r == 255 && b == 0) {
            sawRed = true;
            EXPECT_EQ(mesh.getNumTriangles(), 1u);
            expectPoint(mesh.bndBox().minPt(), 100.0, 0.0, 5.0);
            expectPoint(mesh.bndBox().maxPt(), 101.0, 1.0, 5.0);
        } else if (b == 255 && r == 0) {
            sawBlue = true;
            EXPECT_EQ(mesh.getNumTriangles(), 2u) << "the strip is split into triangles";
            EXPECT_NEAR(a, 128, 1);
            EXPECT_TRUE(entry.material->getSortTransparency());
        }
    }
    EXPECT_TRUE(sawRed);
    EXPECT_TRUE(sawBlue);

    // A file OpenSceneGraph cannot read gives no model.
    std::string const junk = tempPath("junk.obj");
    apptest::writeFile(junk, "this is no model\n");
    kv_shared_ptr<CKVModelBase> none;
    EXPECT_FALSE(importer->readModel(junk.c_str(), none));
    EXPECT_FALSE(none.valid());
    std::remove(junk.c_str());
}

// An OBJ file names its image in its material file, relative to itself;
// the mesh keeps its texture coordinates and the material the image's path.
TEST_F(ViewContentTest, TexturedObjKeepsItsImageAndCoordinates)
{
    std::string const folder = tempPath("textured");
    ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGB, GL_UNSIGNED_BYTE);
    std::fill(image->data(), image->data() + image->getTotalSizeInBytes(), 200);
    ASSERT_TRUE(osgDB::writeImageFile(*image, folder + "/bricks.png"));
    apptest::writeFile(folder + "/wall.mtl", "newmtl brick\nKd 1 1 1\nmap_Kd bricks.png\n");
    apptest::writeFile(folder + "/wall.obj", "mtllib wall.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n"
                                             "usemtl brick\nf 1/1 2/2 3/3\n");

    ViewOsgFileImporter importer;
    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(importer.readModel((folder + "/wall.obj").c_str(), model));
    CKVRenderLOD const* level = model->getLOD(0);
    ASSERT_EQ(level->getNumGeometry(), 1u);
    CKVRenderLOD::GeometryEntry const& entry = level->getGeometry(0);
    EXPECT_EQ(std::string(entry.material->getTexture()), folder + "/bricks.png");
    kv_shared_ptr<CKVRenderGeometryData> data = entry.geometry->getRenderData(CKVRenderGeometryData::kSampleNormal);
    ASSERT_TRUE(data.valid());
    EXPECT_NE(static_cast<CKVRenderBrepFaceData const&>(*data).getUVArray(), nullptr);

    for (char const* name : {"/bricks.png", "/wall.mtl", "/wall.obj"})
        std::remove((folder + name).c_str());
    ::rmdir(folder.c_str());
}

TEST_F(ViewContentTest, PicksAreWordedFromTheProductTable)
{
    IfcProductTable products;
    IfcProductInfo window;
    window.typeName = "IfcWindow";
    window.name = "Fenster 3";
    window.globalId = "2XQ$n5SLP5MBLyL442paFx";
    window.entityId = 4711;
    products.add(window);

    EXPECT_EQ(ViewPickReporter::describe(nullptr, products), "nothing picked");
    kv_shared_ptr<CKVSelectionResult> empty(new CKVSelectionResult);
    EXPECT_EQ(ViewPickReporter::describe(empty.get(), products), "nothing picked");

    kv_shared_ptr<CKVDrawable> drawable(new CKVDrawable(4711));
    kv_shared_ptr<CKVSelectionResult> hit(new CKVSelectionResult);
    hit->setDrawable(drawable.get());
    hit->setPosition(CKVPoint3D(1.0, 2.0, 3.5));
    std::string const text = ViewPickReporter::describe(hit.get(), products);
    EXPECT_EQ(text, "picked IfcWindow 'Fenster 3' GUID 2XQ$n5SLP5MBLyL442paFx at (1.00, 2.00, 3.50)");

    kv_shared_ptr<CKVDrawable> stranger(new CKVDrawable(99));
    hit->setDrawable(stranger.get());
    EXPECT_EQ(ViewPickReporter::describe(hit.get(), products).rfind("picked (id 99)", 0), 0u);
}
