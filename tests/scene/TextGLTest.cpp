// Labels made through the host's factory and sent as render commands, drawn
// by the context's own tick with the text program and the default font.
#include "binding/RenderContextFixture.h"

#include "scene/CKVTextGeometryImp.h"
#include "support/GoldenImage.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVTextGeometry.h"

#include <osg/Image>

#include <cstdlib>

using namespace Kelvor;

namespace {

// Glyph edges are blended; other drivers round them a little differently.
ImageTolerance const kTolerance{8, 0.01};

class TextGLTest : public RenderContextFixture
{
protected:
    // A label of height 1 at the origin, seen from above: the view is 4.6
    // units tall around (1, 0.3).
    bool showLabel(wchar_t const* text)
    {
        CKVRenderConfig config;
        CKVBackGroundConfig background;
        background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
        config.setBackGroundConfig(background);
        mScene.setRenderConfig(config);
        if (!start())
            return false;

        mNode = CKVRenderCallback::createSceneNode();
        mText = CKVRenderCallback::createTextGeometry();
        if (!mNode.valid() || !mText.valid())
            return false;
        mText->setText(text);
        mText->setFontSize(1.0f);

        CKVCamera camera;
        camera.setProjectMode(CKVCamera::kPerspective);
        camera.setFieldOfView(60.0);
        camera.setAspect(double(kWidth) / kHeight);
        camera.setNearFar(0.1, 100.0);
        camera.setPosition(CKVPoint3D(1.0, 0.3, 4.0));
        camera.setTarget(CKVPoint3D(1.0, 0.3, 0.0));
        camera.setUp(CKVVector3D(0, 1, 0));

        kv_shared_ptr<CKVRenderCommand> commands[] = {
            new CKVRCInsertRenderObject(mNode.get(), mText.get()),
            new CKVRCAttachSceneData(mNode.get()),
            new CKVRCApplyCamera(camera),
        };
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        for (auto& command : commands)
            cache->write(command.get());
        return cache->submitAndWait(commands[2].get(), 10000) && settle();
    }

    // Changes reach the label on the render thread, between frames.
    bool change(std::function<void(CKVTextGeometry&)> edit)
    {
        kv_shared_ptr<CKVTextGeometry> text = mText;
        return runOnRenderThread([text, edit](CKVRenderContext*) {
                   edit(*text);
                   return true;
               }) &&
               settle();
    }

    bool settle() { return waitForFrames(mCounter->frames() + 3); }

    // What the window shows, bottom row first.
    osg::ref_ptr<osg::Image> grab() const { return mHost->shown(); }

    // Pixels brighter than the background (the label is white), and their
    // centre in window pixels from the top left.
    static int litPixels(osg::Image const& image, osg::Vec2* centre = nullptr)
    {
        int count = 0;
        osg::Vec2 sum;
        for (int y = 0; y < image.t(); ++y) {
            for (int x = 0; x < image.s(); ++x) {
                unsigned char const* p = image.data(x, y);
                if (p[0] > 130 && p[1] > 150) {
                    ++count;
                    sum += osg::Vec2(x, image.t() - 1 - y);
                }
            }
        }
        if (centre && count)
            *centre = sum / float(count);
        return count;
    }

    kv_shared_ptr<CKVSceneNode> mNode;
    kv_shared_ptr<CKVTextGeometry> mText;
};

TEST_F(TextGLTest, LatinLabelDrawsWhereItStands)
{
    ASSERT_TRUE(showLabel(L"Hi"));
    osg::ref_ptr<osg::Image> image = grab();
    osg::Vec2 centre;
    EXPECT_GT(litPixels(*image, &centre), 20);
    // "Hi" stands right of the origin and above the base line: left of the
    // view's centre column (x = 1), above its centre row (y = 0.3).
    EXPECT_LT(centre.x(), kWidth / 2.0f);
    EXPECT_LT(centre.y(), kHeight / 2.0f);
    expectMatchesGolden(*image, "text_latin", kTolerance);
}

TEST_F(TextGLTest, CJKLabelDrawsWithTheDefaultFont)
{
    ASSERT_TRUE(showLabel(L"\u4e2d\u6587"));
    osg::ref_ptr<osg::Image> image = grab();
    EXPECT_GT(litPixels(*image), 40);
    expectMatchesGolden(*image, "text_cjk", kTolerance);
}

// Text, size, position and direction changes all show on screen.
TEST_F(TextGLTest, ChangesMoveAndReshapeTheLabel)
{
    ASSERT_TRUE(showLabel(L"Hi"));
    osg::Vec2 before;
    int const lit = litPixels(*grab(), &before);
    ASSERT_GT(lit, 20);

    ASSERT_TRUE(change([](CKVTextGeometry& text) { text.setPosition(CKVPoint3D(0.8, 0.0, 0.0)); }));
    osg::Vec2 moved;
    ASSERT_GT(litPixels(*grab(), &moved), 20);
    EXPECT_GT(moved.x() - before.x(), 5.0f) << "0.8 units to the right";

    ASSERT_TRUE(change([](CKVTextGeometry& text) { text.setFontSize(0.5f); }));
    int const smaller = litPixels(*grab());
    EXPECT_LT(smaller, lit * 0.6);
    EXPECT_GT(smaller, 0);

    ASSERT_TRUE(change([](CKVTextGeometry& text) { text.setText(L"Hi Hi Hi"); }));
    EXPECT_GT(litPixels(*grab()), smaller * 2);

    // Reading downwards: the label turns about its origin.
    ASSERT_TRUE(change([](CKVTextGeometry& text) {
        text.setText(L"Hi");
        text.setFontSize(1.0f);
        text.setPosition(CKVPoint3D(1.0, 1.5, 0.0));
        text.setDirection(CKVVector3D(0, -1, 0), CKVVector3D(0, 0, 1));
    }));
    osg::Vec2 turned;
    ASSERT_GT(litPixels(*grab(), &turned), 20);
    EXPECT_NEAR(turned.x(), kWidth / 2.0f, 8.0f);
}

} // namespace
