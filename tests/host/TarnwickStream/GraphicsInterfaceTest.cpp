#include "host/HostStandIns.h"

#include "TarnwickGeometry/CKVCone.h"
#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickStream/CKVGraphicsInterfaceImp.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <gtest/gtest.h>

using namespace Kelvor;

namespace {

// Stands in for a loaded backend: its factories make plain host objects.
class GraphicsInterface : public ::testing::Test
{
private:
    hosttest::MemoryFactoriesScope mFactories;
};

} // namespace

TEST_F(GraphicsInterface, ShapesBecomeGeometryWithTheCurrentMaterial)
{
    CKVGraphicsInterfaceImp graphics;
    kv_shared_ptr<CKVBasicMaterial> red(new CKVBasicMaterial);
    red->setRGB(255, 0, 0);
    graphics.setCurrentMaterial(red.get());

    CKVCone cone;
    cone.setGetRenderDataUV(false);
    cone.setBottomCenter(CKVPoint3D(75, 0, 0));
    cone.setMajorVector(CKVVector3D(25, 0, 0));
    cone.setRadiu(10);
    ASSERT_TRUE(graphics.addGeometry(&cone));
    graphics.setCurrentMaterial(nullptr);
    ASSERT_TRUE(graphics.addGeometry(&cone));

    std::vector<kv_shared_ptr<CKVRenderObject>> objects;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> materials;
    graphics.getRenderObjectArray(objects, materials);
    ASSERT_EQ(2u, objects.size());
    ASSERT_EQ(2u, materials.size());
    EXPECT_EQ(red, materials[0]);
    ASSERT_TRUE(materials[1]);
    EXPECT_NE(0, materials[1]->compare(*red));

    // The shape is packed when the backend first asks, as at insertion.
    ASSERT_TRUE(objects[0]->isKindOf(CKVBufferGeometry::desc()));
    CKVBufferGeometry* geometry = static_cast<CKVBufferGeometry*>(objects[0].get());
    ASSERT_TRUE(geometry->updatePhysicalBuffer());
    ASSERT_TRUE(geometry->validRendering());
    EXPECT_EQ(CKVVertexIndex::kTriangles, geometry->getVertexIndex()->getDrawMode());
    EXPECT_EQ(0u, geometry->getVertexIndex()->getDataSize() % 3);
    EXPECT_EQ(nullptr, geometry->getVertexBufferAttribute(CKVVertexBufferAttribute::kTexCoord));
    CKVBndBox const box = geometry->getVertexBoundingBox();
    EXPECT_NEAR(75.0, box.minPt().x, 1e-4);
    EXPECT_NEAR(100.0, box.maxPt().x, 1e-4);
    EXPECT_NEAR(10.0, box.maxPt().y, 1e-4);
}

TEST(GraphicsInterfaceWithoutBackend, NothingIsMade)
{
    CKVGraphicsInterfaceImp graphics;
    CKVCone cone;
    cone.setMajorVector(CKVVector3D(0, 0, 1));
    cone.setRadiu(1);
    EXPECT_FALSE(graphics.addGeometry(&cone));
    EXPECT_FALSE(graphics.addGeometry(nullptr));
    std::vector<kv_shared_ptr<CKVRenderObject>> objects;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> materials;
    graphics.getRenderObjectArray(objects, materials);
    EXPECT_TRUE(objects.empty());
}

TEST(RenderLODContent, LevelsOwnTheirGeometryAndChildren)
{
    kv_shared_ptr<CKVRenderLOD> root(new CKVRenderLOD);
    kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
    ASSERT_TRUE(root->addGeometry(material.get(), mesh.get()));
    EXPECT_FALSE(root->addGeometry(material.get(), nullptr));
    EXPECT_EQ(2u, mesh->refCount());

    EXPECT_FALSE(root->addChildLOD(root.get()));
    EXPECT_FALSE(root->addChildLOD(nullptr));
    CKVRenderLOD* near = new CKVRenderLOD;
    near->setLoadDistance(0.0f, 100.0f);
    ASSERT_TRUE(root->addChildLOD(near));
    ASSERT_TRUE(near->addChildLOD(new CKVRenderLOD));
    ASSERT_TRUE(root->addChildLOD(new CKVRenderLOD));
    EXPECT_EQ(4u, root->countLODs());

    root = nullptr;
    EXPECT_EQ(1u, mesh->refCount());
}
