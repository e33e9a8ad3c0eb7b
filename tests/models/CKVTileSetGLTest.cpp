// A tile set taken the whole way a host takes it: imported through the
// host's model registry by its extension, its levels turned into host scene
// nodes with culling states, sent as render commands and drawn by the tick.
// Moving the camera closer must swap the coarse level for the finer one.
#include "TileSetFixture.h"

#include "binding/RenderContextFixture.h"

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVRCInsertSceneNode.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVUniform.h"
#include "TarnwickStream/CKVModelIOManager.h"

#include <osg/PagedLOD>

#include <cstdlib>
#include <vector>

namespace Kelvor {
namespace {

// What a host does with an imported model, reduced to what the test needs:
// one scene node per level, carrying the level's range as a culling state,
// and one flat-coloured child node per mesh.
class LevelSceneBuilder
{
public:
    kv_shared_ptr<CKVSceneNode> build(CKVRenderLOD const& lod)
    {
        kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
        if (!node)
            return nullptr;
        CKVCullingState* culling = new CKVCullingState;
        culling->setCullingMode(lod.getLoadMode());
        culling->setCullingChild(lod.getCullingChild());
        culling->setDistance(lod.getMinDistance(), lod.getMaxDistance());
        node->getStateSet()->addState(culling);

        for (unsigned int i = 0; i < lod.getNumGeometry(); ++i) {
            kv_shared_ptr<CKVSceneNode> meshNode = meshScene(lod.getGeometry(i));
            if (!meshNode)
                return nullptr;
            mCommands.push_back(new CKVRCInsertSceneNode(node.get(), meshNode.get()));
        }
        for (unsigned int i = 0; i < lod.getNumChildLOD(); ++i) {
            kv_shared_ptr<CKVSceneNode> child = build(*lod.getChildLOD(i));
            if (!child)
                return nullptr;
            mCommands.push_back(new CKVRCInsertSceneNode(node.get(), child.get()));
        }
        return node;
    }

    std::vector<kv_shared_ptr<CKVRenderCommand>> mCommands;

private:
    kv_shared_ptr<CKVSceneNode> meshScene(CKVRenderLOD::GeometryEntry const& entry)
    {
        if (!entry.geometry || !entry.geometry->isKindOf(CKVMesh::desc()))
            return nullptr;
        CKVMesh const& mesh = static_cast<CKVMesh const&>(*entry.geometry);
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
        part->setVertexData(CKVVertexBufferAttribute::kVertex, &mesh.getPoints()[0].x, 3 * mesh.getNumPoints());
        part->setIndexData(&mesh.getTriangles()[0].x, 3 * mesh.getNumTriangles());
        kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
        if (!geometry || !geometry->addLogicBuffer(part.get()))
            return nullptr;

        kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
        node->setProgramParam(CKVProgramParam(CKVProgramParam::kFlatColor));
        unsigned char r, g, b, a;
        entry.material->getRGBA(r, g, b, a);
        float const colour[4] = {r / 255.0f, g / 255.0f, b / 255.0f, a / 255.0f};
        kv_shared_ptr<CKVUniform> uniform(CKVRenderCallback::createUniform("AlbedoColor_V4", CKVUniform::kFloatVec4));
        if (!uniform || !uniform->setValue(colour) || !node->addUniform(uniform.get()))
            return nullptr;
        mCommands.push_back(new CKVRCInsertRenderObject(node.get(), geometry.get()));
        return node;
    }
};

class CKVTileSetGLTest : public RenderContextFixture
{
protected:
    void SetUp() override
    {
        RenderContextFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        std::string pattern = std::string(::testing::TempDir()) + "tileset_XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        mRoot = pattern;
    }

    void TearDown() override
    {
        RenderContextFixture::TearDown();
        std::error_code ignored;
        if (!mRoot.empty())
            std::filesystem::remove_all(mRoot, ignored);
    }

    // One 20 m square tile: red from afar, green within 30 m of its centre,
    // the green level in a file of its own as the tile's pager would find it.
    bool writeTileSet()
    {
        osg::ref_ptr<osg::Geode> fine = new osg::Geode;
        fine->addDrawable(square(10.0f).get());
        setColour(*fine, osg::Vec4(0, 1, 0, 1));
        osg::ref_ptr<osg::Geode> coarse = new osg::Geode;
        coarse->addDrawable(square(10.0f).get());
        setColour(*coarse, osg::Vec4(1, 0, 0, 1));
        osg::ref_ptr<osg::PagedLOD> root = new osg::PagedLOD;
        root->addChild(coarse.get(), 30.0f, 1e6f);
        root->setFileName(1, "Tile_1_L2.osgb");
        root->setRange(1, 0.0f, 30.0f);

        osg::ref_ptr<osgDB::Options> options = new osgDB::Options("WriteImageHint=IncludeData");
        return osgDB::makeDirectory(mRoot + "/Tile_1") &&
               osgDB::writeNodeFile(*fine, mRoot + "/Tile_1/Tile_1_L2.osgb", options.get()) &&
               osgDB::writeNodeFile(*root, mRoot + "/Tile_1/Tile_1.osgb", options.get()) &&
               writeDescriptor();
    }

    bool writeDescriptor() const
    {
        std::ofstream out(mRoot + "/city.lfp");
        out << "<DataDefine><NodeList><Node>.\\Tile_1\\Tile_1.osgb</Node></NodeList></DataDefine>";
        return bool(out);
    }

    // A square of side 2 half centred on the origin, facing up.
    static osg::ref_ptr<osg::Geometry> square(float half)
    {
        osg::ref_ptr<osg::Geometry> geometry = TileSetFixture::square(0.0f);
        osg::Vec3Array& vertices = static_cast<osg::Vec3Array&>(*geometry->getVertexArray());
        for (osg::Vec3& v : vertices)
            v = osg::Vec3(v.x() * 2 * half - half, v.y() * 2 * half - half, 0.0f);
        return geometry;
    }

    static void setColour(osg::Node& node, osg::Vec4 const& colour) { TileSetFixture::setColour(node, colour); }

    CKVCamera cameraAt(double height) const
    {
        CKVCamera camera;
        camera.setProjectMode(CKVCamera::kPerspective);
        camera.setFieldOfView(60.0);
        camera.setAspect(double(kWidth) / kHeight);
        camera.setNearFar(0.5, 1000.0);
        camera.setPosition(CKVPoint3D(0, 0, height));
        camera.setTarget(CKVPoint3D(0, 0, 0));
        camera.setUp(CKVVector3D(0, 1, 0));
        return camera;
    }

    bool centre(unsigned char rgb[3]) { return mHost->readPixel(kWidth / 2, kHeight / 2, rgb); }

    bool viewFrom(double height)
    {
        kv_shared_ptr<CKVRenderCommand> apply = new CKVRCApplyCamera(cameraAt(height));
        return mContext->getRenderCommandCache()->submitAndWait(apply.get(), 10000) &&
               waitForFrames(mCounter->frames() + 3);
    }

    std::string mRoot;
};

bool isRed(unsigned char const rgb[3]) { return rgb[0] > 200 && rgb[1] < 50 && rgb[2] < 50; }
bool isGreen(unsigned char const rgb[3]) { return rgb[0] < 50 && rgb[1] > 200 && rgb[2] < 50; }

TEST_F(CKVTileSetGLTest, FinerLevelReplacesTheCoarseOneAsTheCameraComesClose)
{
    ASSERT_TRUE(writeTileSet());
    CKVRenderConfig config;
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    config.setBackGroundConfig(background);
    mScene.setRenderConfig(config);
    ASSERT_NE(start(), nullptr);

    kv_shared_ptr<CKVModelBase> model;
    ASSERT_TRUE(CKVModelIOManager::instance()->readModel((mRoot + "\\city.lfp").c_str(), model));
    ASSERT_TRUE(model.valid());
    ASSERT_EQ(model->getNumLOD(), 1u);

    LevelSceneBuilder builder;
    kv_shared_ptr<CKVSceneNode> root = builder.build(*model->getLOD(0));
    ASSERT_TRUE(root.valid());
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    for (auto& command : builder.mCommands)
        cache->write(command.get());
    kv_shared_ptr<CKVRenderCommand> attach = new CKVRCAttachSceneData(root.get());
    cache->write(attach.get());
    ASSERT_TRUE(viewFrom(80.0));

    unsigned char rgb[3];
    ASSERT_TRUE(centre(rgb));
    EXPECT_TRUE(isRed(rgb)) << int(rgb[0]) << "," << int(rgb[1]) << "," << int(rgb[2]);
    // The square is 20 m wide: seen from 80 m it leaves the corners empty.
    ASSERT_TRUE(mHost->readPixel(2, 2, rgb));
    EXPECT_FALSE(isRed(rgb) || isGreen(rgb));

    ASSERT_TRUE(viewFrom(12.0));
    ASSERT_TRUE(centre(rgb));
    EXPECT_TRUE(isGreen(rgb)) << int(rgb[0]) << "," << int(rgb[1]) << "," << int(rgb[2]);

    ASSERT_TRUE(viewFrom(80.0));
    ASSERT_TRUE(centre(rgb));
    EXPECT_TRUE(isRed(rgb)) << "moving away brings the coarse level back";
}

} // namespace
} // namespace Kelvor
