#include "scene/CKVOSGText2D.h"
#include "scene/CKVSceneNodeImp.h"
#include "scene/CKVTextGeometryImp.h"

#include "TarnwickRender/CKVRenderCallback.h"

#include <osg/State>
#include <osg/StateSet>
#include <osg/Uniform>
#include <osgDB/FileNameUtils>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

namespace Kelvor {
namespace {

kv_shared_ptr<CKVTextGeometryImp> makeText()
{
    CKVTextGeometry* made = CKVRenderCallback::createTextGeometry();
    EXPECT_NE(made, nullptr);
    EXPECT_TRUE(made && made->isKindOf(CKVTextGeometryImp::desc()));
    return static_cast<CKVTextGeometryImp*>(made);
}

TEST(TextGeometryTest, FactoryMakesALabelWithTheDefaultFont)
{
    kv_shared_ptr<CKVTextGeometryImp> text = makeText();
    ASSERT_TRUE(text.valid());
    CKVOSGText2D* label = text->getOSGText();
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->getHostGeometry(), text.get());
    ASSERT_NE(label->getFont(), nullptr) << "fonts/simhei.ttf not found in the resource directory";
    EXPECT_EQ(osgDB::getSimpleFileName(label->getFont()->getFileName()), "simhei.ttf");
    EXPECT_EQ(label->getAxisAlignment(), osgText::Text::XY_PLANE);
    // The label's state set carries the backend's text program.
    ASSERT_NE(label->getStateSet(), nullptr);
    osg::StateAttribute const* program = label->getStateSet()->getAttribute(osg::StateAttribute::PROGRAM);
    ASSERT_NE(program, nullptr);
    EXPECT_EQ(program->getName(), "KVProgram13");
}

// Each setter keeps the host's value and changes the label to match.
TEST(TextGeometryTest, SettersReachTheLabel)
{
    kv_shared_ptr<CKVTextGeometryImp> text = makeText();
    CKVOSGText2D* label = text->getOSGText();

    text->setText(L"Hi \u4e2d\u6587");
    EXPECT_STREQ(text->getText(), L"Hi \u4e2d\u6587");
    EXPECT_EQ(label->getText().createUTF8EncodedString(), "Hi \xe4\xb8\xad\xe6\x96\x87");

    text->setFontSize(2.5f);
    EXPECT_FLOAT_EQ(text->getFontSize(), 2.5f);
    EXPECT_FLOAT_EQ(label->getCharacterHeight(), 2.5f);

    text->setPosition(CKVPoint3D(1.0, -2.0, 3.5));
    EXPECT_EQ(label->getPosition(), osg::Vec3(1.0f, -2.0f, 3.5f));

    // A font file that cannot be read keeps the old font. (A missing name
    // is no test of this: the font search may match a system font.)
    std::string const broken = "/tmp/kv_broken_font_" + std::to_string(::getpid()) + ".ttf";
    std::ofstream(broken) << "not a font";
    osgText::Font const* font = label->getFont();
    text->setFontFile(broken.c_str());
    std::remove(broken.c_str());
    EXPECT_STREQ(text->getFontFile(), broken.c_str());
    EXPECT_EQ(label->getFont(), font);
}

TEST(TextGeometryTest, BoundingBoxFollowsTextSizeAndPosition)
{
    kv_shared_ptr<CKVTextGeometryImp> text = makeText();
    text->setFontSize(1.0f);
    text->setText(L"Label");
    CKVBndBox const small = text->computeBoundingBox();
    ASSERT_TRUE(small.valid());
    text->setFontSize(2.0f);
    text->setPosition(CKVPoint3D(10.0, 0.0, 0.0));
    CKVBndBox const large = text->computeBoundingBox();
    ASSERT_TRUE(large.valid());
    EXPECT_NEAR(large.maxPt().x - large.minPt().x, 2.0 * (small.maxPt().x - small.minPt().x), 1e-3);
    EXPECT_GE(large.minPt().x, 10.0 - 1e-3);
}

// A valid direction turns the label so that its x axis reads along the
// direction and its z axis is the normal; invalid pairs change nothing.
TEST(TextGeometryTest, DirectionTurnsTheLabelOnlyForPerpendicularVectors)
{
    kv_shared_ptr<CKVTextGeometryImp> text = makeText();
    CKVOSGText2D* label = text->getOSGText();

    ASSERT_TRUE(text->setDirection(CKVVector3D(0, 2, 0), CKVVector3D(-3, 0, 0)));
    osg::Quat const turned = label->getRotation();
    osg::Vec3 const x = turned * osg::Vec3(1, 0, 0);
    osg::Vec3 const z = turned * osg::Vec3(0, 0, 1);
    EXPECT_NEAR((x - osg::Vec3(0, 1, 0)).length(), 0.0f, 1e-5f);
    EXPECT_NEAR((z - osg::Vec3(-1, 0, 0)).length(), 0.0f, 1e-5f);

    EXPECT_FALSE(text->setDirection(CKVVector3D(1, 1, 0), CKVVector3D(1, 1, 0)));
    EXPECT_FALSE(text->setDirection(CKVVector3D(0, 0, 0), CKVVector3D(0, 0, 1)));
    EXPECT_FALSE(text->setDirection(CKVVector3D(1, 0, 0), CKVVector3D(0, 0, 0)));
    EXPECT_FALSE(text->setDirection(CKVVector3D(1, 0, 0), CKVVector3D(0.01, 0, 1)));
    CKVVector3D direction, normal;
    text->getDirection(direction, normal);
    EXPECT_DOUBLE_EQ(direction.y, 2.0);
    EXPECT_DOUBLE_EQ(normal.x, -3.0);
    EXPECT_EQ(label->getRotation(), turned);
}

TEST(TextGeometryTest, LabelForgetsItsHostWhenTheHostGoes)
{
    osg::ref_ptr<CKVOSGText2D> label;
    {
        kv_shared_ptr<CKVTextGeometryImp> text = makeText();
        label = text->getOSGText();
        EXPECT_EQ(label->getHostGeometry(), text.get());
    }
    EXPECT_EQ(label->getHostGeometry(), nullptr);
}

// The colour of a label is the albedo in force where it is drawn.
TEST(TextGeometryTest, ColourIsTheAlbedoInForceOrWhite)
{
    osg::ref_ptr<osg::State> state = new osg::State;
    EXPECT_EQ(CKVOSGText2D::currentAlbedo(*state), osg::Vec4(1, 1, 1, 1));

    osg::ref_ptr<osg::StateSet> outer = new osg::StateSet;
    outer->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4(1, 0, 0, 1)));
    osg::ref_ptr<osg::StateSet> inner = new osg::StateSet;
    inner->addUniform(new osg::Uniform("AlbedoColor_V4", osg::Vec4(0, 0.5f, 0, 1)));
    state->pushStateSet(outer.get());
    EXPECT_EQ(CKVOSGText2D::currentAlbedo(*state), osg::Vec4(1, 0, 0, 1));
    state->pushStateSet(inner.get());
    EXPECT_EQ(CKVOSGText2D::currentAlbedo(*state), osg::Vec4(0, 0.5f, 0, 1));
    state->popStateSet();
    state->popStateSet();
    EXPECT_EQ(CKVOSGText2D::currentAlbedo(*state), osg::Vec4(1, 1, 1, 1));
}

// A scene node shows the label as one child of its transform node.
TEST(TextGeometryTest, SceneNodeHoldsTheLabel)
{
    kv_shared_ptr<CKVSceneNodeImp> node = new CKVSceneNodeImp;
    kv_shared_ptr<CKVTextGeometryImp> text = makeText();
    ASSERT_TRUE(node->addRenderObject(text.get()));
    EXPECT_TRUE(node->getOSGNode()->containsNode(text->getOSGText()));
    ASSERT_TRUE(node->removeRenderObject(text.get()));
    EXPECT_FALSE(node->getOSGNode()->containsNode(text->getOSGText()));
}

} // namespace
} // namespace Kelvor
