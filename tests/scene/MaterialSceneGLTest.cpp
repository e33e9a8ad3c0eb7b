// Host materials on boxes standing on a plane, sent to a render context as
// commands only and captured the way a host captures a frame: lighting,
// textures, transparency, highlight, error images and the render
// configuration switches that change how surfaces shade.
#include "LitSceneFixture.h"
#include "MaterialTestSupport.h"
#include "SceneShapes.h"

#include "effects/CKVPostProcessNode.h"

#include "TarnwickRender/CKVPhysicalMaterial.h"
#include "TarnwickRender/CKVRCUpdateClipTest.h"

#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <string>

namespace Kelvor {
namespace {

// A checker of two colours in squares of 8 by 8 texels.
osg::ref_ptr<osg::Image> checker(osg::Vec4ub a, osg::Vec4ub b)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    int const size = 64;
    image->allocateImage(size, size, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            osg::Vec4ub const& c = ((x / 8 + y / 8) % 2 == 0) ? a : b;
            unsigned char* p = image->data(x, y);
            p[0] = c.r();
            p[1] = c.g();
            p[2] = c.b();
            p[3] = c.a();
        }
    }
    return image;
}

class MaterialSceneGLTest : public LitSceneFixture
{
protected:
    MaterialSceneGLTest() : LitSceneFixture({160, 120, CKVPoint3D(7.0, -11.0, 7.0), CKVPoint3D(0.0, 0.0, 0.5)}) {}

    void configure(CKVRenderConfig& config) override
    {
        // A strong sun over a weak ambient, so that faces differ by their
        // angle to the light and physically based surfaces, which have no
        // ambient term without image-based lighting, are seen.
        config.setLightIntensity(6.0f);
        config.setAmbientIntensity(0.2f);
    }

    std::string writeTexture(char const* name, osg::Image const& image)
    {
        std::string const path = mFolder.file(name);
        EXPECT_TRUE(osgDB::writeImageFile(image, path));
        return path;
    }

    // A box of half sizes (sx, sy, sz) at `position`, with the material's
    // program and `extra` program switches.
    kv_shared_ptr<CKVSceneNode> addBox(CKVBasicMaterial* material, CKVPoint3D const& position, float sx, float sy,
                                       float sz, unsigned int extra = 0)
    {
        CKVProgramParam param;
        if (extra)
            param.addParam(static_cast<CKVProgramParam::Param>(extra));
        return addNode(material, {SceneShapes::boxShape(sx, sy, sz)}, position, param);
    }

    static kv_shared_ptr<CKVBasicMaterial> colour(unsigned char r, unsigned char g, unsigned char b,
                                                  unsigned char a = 255)
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(r, g, b, a);
        return material;
    }

    // A grey ground plate and, on it, whatever the test adds.
    void addGround()
    {
        mGround = colour(170, 170, 160);
        addBox(mGround.get(), CKVPoint3D(0, 0, -0.05), 5.0f, 5.0f, 0.05f);
    }

    kv_shared_ptr<CKVBasicMaterial> mGround;
};

} // namespace

TEST_F(MaterialSceneGLTest, BasicPhysicalAndTexturedBoxesAreLit)
{
    addGround();
    kv_shared_ptr<CKVBasicMaterial> red = colour(200, 40, 30);
    addBox(red.get(), CKVPoint3D(-2.5, 0, 1), 1.0f, 1.0f, 1.0f);

    kv_shared_ptr<CKVPhysicalMaterial> physical(new CKVPhysicalMaterial);
    physical->setRGBA(60, 90, 200, 255);
    physical->setMetallic(0.3f);
    physical->setRoughness(0.35f);
    addBox(physical.get(), CKVPoint3D(0, 0, 1), 1.0f, 1.0f, 1.0f);

    kv_shared_ptr<CKVBasicMaterial> textured = colour(255, 255, 255);
    textured->setTexture(writeTexture("checker.png", *checker({240, 200, 40, 255}, {30, 120, 60, 255})).c_str());
    addBox(textured.get(), CKVPoint3D(2.5, 0, 1), 1.0f, 1.0f, 1.0f);
    expectGolden("material_lit_boxes");

    // The same scene under the render configuration's switches.
    mConfig.setFogUse(true);
    mConfig.setFogColor(CKVVec3<float>(0.9f, 0.9f, 0.9f));
    mConfig.setFogDensity(0.03f);
    applyConfig();
    expectGolden("material_fog");

    mConfig.setFogUse(false);
    mConfig.setRenderStyle(CKVRenderConfig::kWhiteModelWithEdges);
    applyConfig();
    expectGolden("material_white_model");

    mConfig.setRenderStyle(CKVRenderConfig::kShaded);
    mConfig.setLightPosition(CKVVec3<float>(0.3f, -0.3f, -0.9f));
    applyConfig();
    expectGolden("material_night");

    mConfig.setLightPosition(CKVVec3<float>(0.5f, -0.5f, 0.7071068f));
    applyConfig();
    CKVVec4<float> const plane(0.0f, -1.0f, 0.0f, 0.0f);
    send(new CKVRCUpdateClipTest(&plane, 1));
    expectGolden("material_clipped");
}

TEST_F(MaterialSceneGLTest, AlphaTestCutsHolesAndTranslucencyShowsWhatIsBehind)
{
    addGround();
    kv_shared_ptr<CKVBasicMaterial> holes = colour(255, 255, 255);
    holes->setTexture(writeTexture("holes.png", *checker({220, 60, 60, 255}, {0, 0, 0, 0})).c_str());
    addBox(holes.get(), CKVPoint3D(-1.5, 0, 1), 1.0f, 1.0f, 1.0f, CKVProgramParam::kUseAlphaTest);

    // A tall opaque post behind a translucent pane: the post shows through.
    kv_shared_ptr<CKVBasicMaterial> post = colour(40, 40, 160);
    addBox(post.get(), CKVPoint3D(2.0, 2.0, 1.5), 0.3f, 0.3f, 1.5f);
    kv_shared_ptr<CKVBasicMaterial> glass = colour(120, 220, 140, 110);
    glass->setSortTransparency(true);
    addBox(glass.get(), CKVPoint3D(1.5, 0, 1), 1.4f, 0.1f, 1.0f);
    expectGolden("material_transparency");
}

TEST_F(MaterialSceneGLTest, HighlightAndErrorImagesAreSeenOnTheModel)
{
    addGround();
    kv_shared_ptr<CKVBasicMaterial> selected = colour(230, 180, 40);
    addBox(selected.get(), CKVPoint3D(-2.5, 0, 1), 1.0f, 1.0f, 1.0f, CKVProgramParam::kUseHighlightStyle);

    kv_shared_ptr<CKVBasicMaterial> missing = colour(255, 255, 255);
    missing->setTexture(mFolder.file("no-such-texture.png").c_str());
    addBox(missing.get(), CKVPoint3D(0, 0, 1), 1.0f, 1.0f, 1.0f);

    kv_shared_ptr<CKVBasicMaterial> unreadable = colour(255, 255, 255);
    unreadable->setTexture(MaterialTestSupport::writeGarbage(mFolder, "garbage.png").c_str());
    addBox(unreadable.get(), CKVPoint3D(2.5, 0, 1), 1.0f, 1.0f, 1.0f);
    expectGolden("material_highlight_and_errors");
}

// The surface resources are generated at build time, so the start-up finds
// the anti-repetition noise and the snow normals on their reserved units.
TEST_F(MaterialSceneGLTest, StartUpBindsTheGeneratedNoiseAndSnowTextures)
{
    bool noise = false;
    bool snow = false;
    ASSERT_TRUE(tickWith([&](CKVRenderContext* context) {
        osg::StateSet* root = static_cast<CKVRenderContextX11Imp*>(context)->getRoot()->getStateSet();
        auto imageOn = [root](unsigned int unit) {
            auto const* texture =
                dynamic_cast<osg::Texture2D const*>(root->getTextureAttribute(unit, osg::StateAttribute::TEXTURE));
            return texture && texture->getImage() && texture->getImage()->s() > 0;
        };
        noise = imageOn(16);
        snow = imageOn(19);
        return true;
    }));
    EXPECT_TRUE(noise);
    EXPECT_TRUE(snow);
}

} // namespace Kelvor
