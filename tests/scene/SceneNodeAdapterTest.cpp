#include "SceneNodeTestScene.h"

#include "programs/CKVProgramManager.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVOSGNodeAdapter.h"

#include <osg/Geode>
#include <osg/Material>
#include <osg/Texture2D>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

using namespace SceneNodeTestScene;

osg::ref_ptr<osg::Texture2D> makeTexture(unsigned char alpha)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (unsigned int i = 0; i < 16; ++i)
        image->data()[i] = (i % 4 == 3) ? alpha : 200;
    return new osg::Texture2D(image.get());
}

osg::Program* programFor(unsigned int params)
{
    CKVProgramParam param(CKVProgramParam::kSurface);
    param.addParam(static_cast<CKVProgramParam::Param>(params));
    return CKVProgramManager::instance().getProgram(param).get();
}

void update(osg::Node& node)
{
    osg::ref_ptr<CKVOSGNodeAdapter> adapter = new CKVOSGNodeAdapter;
    node.accept(*adapter);
}

// A texture at unit 0 becomes the albedo, a translucent one adds the alpha
// test; without a texture the material's diffuse colour is the albedo.
TEST(SceneNodeAdapterTest, ForeignStateGetsTheSurfaceProgram)
{
    osg::ref_ptr<osg::Geometry> opaque = makeQuad("opaque", 1.0f);
    opaque->getOrCreateStateSet()->setTextureAttribute(0, makeTexture(255));
    osg::ref_ptr<osg::Geometry> cutout = makeQuad("cutout", 1.0f);
    cutout->getOrCreateStateSet()->setTextureAttribute(0, makeTexture(0));
    osg::ref_ptr<osg::Geode> coloured = new osg::Geode;
    osg::ref_ptr<osg::Material> material = new osg::Material;
    material->setDiffuse(osg::Material::FRONT_AND_BACK, osg::Vec4(0.25f, 0.5f, 0.75f, 1.0f));
    coloured->getOrCreateStateSet()->setAttribute(material.get());
    update(*opaque);
    update(*cutout);
    update(*coloured);

    osg::StateSet const& opaqueState = *opaque->getStateSet();
    int unit = -1;
    ASSERT_NE(opaqueState.getUniform("Albedo_Tx"), nullptr);
    EXPECT_TRUE(opaqueState.getUniform("Albedo_Tx")->get(unit) && unit == 0);
    EXPECT_EQ(opaqueState.getTextureMode(0, GL_TEXTURE_2D), osg::StateAttribute::ON);
    EXPECT_EQ(opaqueState.getAttribute(osg::StateAttribute::PROGRAM), programFor(CKVProgramParam::kUseTexture));
    EXPECT_NE(opaqueState.getDefinePair(CKVProgramManager::instance().getDefineName(CKVProgramParam::kUseTexture)),
              nullptr);
    EXPECT_EQ(cutout->getStateSet()->getAttribute(osg::StateAttribute::PROGRAM),
              programFor(CKVProgramParam::kUseTexture | CKVProgramParam::kUseAlphaTest));

    osg::Vec4f colour;
    osg::StateSet const& colouredState = *coloured->getStateSet();
    ASSERT_NE(colouredState.getUniform("AlbedoColor_V4"), nullptr);
    EXPECT_TRUE(colouredState.getUniform("AlbedoColor_V4")->get(colour));
    EXPECT_EQ(colour, osg::Vec4f(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_EQ(colouredState.getAttribute(osg::StateAttribute::PROGRAM), programFor(0));
}

// Nothing to convert, a program of its own, or one of our own nodes: the
// state set stays exactly as it was, frame after frame.
TEST(SceneNodeAdapterTest, OtherStateSetsAreLeftUntouched)
{
    osg::ref_ptr<osg::Geometry> plain = makeQuad("plain", 1.0f);
    plain->getOrCreateStateSet()->setMode(GL_BLEND, osg::StateAttribute::ON);
    osg::ref_ptr<osg::Geometry> programmed = makeQuad("programmed", 1.0f);
    programmed->getOrCreateStateSet()->setAttribute(new osg::Program);
    programmed->getStateSet()->setTextureAttribute(0, makeTexture(255));
    osg::ref_ptr<CKVOSGGeometry> ours = new CKVOSGGeometry;
    ours->getOrCreateStateSet()->setTextureAttribute(0, makeTexture(255));
    kv_shared_ptr<CKVSceneNodeImp> node = makeNode();
    node->getOSGNode()->getOrCreateStateSet()->setAttribute(new osg::Material);

    for (osg::Node* each : {static_cast<osg::Node*>(plain.get()), static_cast<osg::Node*>(programmed.get()),
                            static_cast<osg::Node*>(ours.get()), static_cast<osg::Node*>(node->getOSGNode())}) {
        update(*each);
        update(*each);
        EXPECT_TRUE(each->getStateSet()->getUniformList().empty()) << each->className();
    }
    EXPECT_TRUE(plain->getStateSet()->getAttributeList().empty());
}

} // namespace
} // namespace Kelvor
