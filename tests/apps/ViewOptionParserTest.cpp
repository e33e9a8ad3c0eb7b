#include "apps/view/ViewFeatures.h"
#include "apps/view/ViewKeyBindings.h"
#include "apps/view/ViewOptionParser.h"
#include "apps/view/ViewRenderSettings.h"
#include "apps/view/ViewSunPosition.h"

#include "TarnwickRender/CKVEvent.h"

#include <gtest/gtest.h>

#include <osg/Vec3f>

#include <functional>

using namespace Kelvor;

namespace {

bool parse(std::vector<std::string> const& arguments, ViewOptions& options, std::string* error = nullptr)
{
    ViewOptionParser parser;
    bool const ok = parser.parse(arguments, options);
    if (error)
        *error = parser.getError();
    return ok;
}

} // namespace

TEST(ViewOptionParserTest, SizesInsideTheLimitsAreTakenAndOthersRefusedWithoutChangingTheDefault)
{
    ViewOptions options;
    ASSERT_TRUE(parse({"--size", "320x240"}, options));
    EXPECT_EQ(options.width, 320);
    EXPECT_EQ(options.height, 240);
    ASSERT_TRUE(parse({"--size", "16X8192"}, options));
    EXPECT_EQ(options.width, 16);
    EXPECT_EQ(options.height, 8192);

    for (char const* bad : {"0x0", "15x100", "100x8193", "100x", "x100", "100", "-5x10", "10x-5", "+20x20", "1e3x20",
                            " 20x20", "20x20 ", "20x20x20", "axb", "99999999999x20", ""}) {
        ViewOptions untouched;
        std::string error;
        EXPECT_FALSE(parse({"--size", bad}, untouched, &error)) << "'" << bad << "'";
        EXPECT_NE(error.find("--size"), std::string::npos) << error;
        EXPECT_EQ(untouched.width, 1024) << bad;
        EXPECT_EQ(untouched.height, 768) << bad;
    }
}

TEST(ViewOptionParserTest, CameraNeedsSixFiniteNumbersAndTwoDistinctPoints)
{
    ViewOptions options;
    ASSERT_TRUE(parse({"--camera", "10,-20.5,3e1,0,0,1.5"}, options));
    EXPECT_TRUE(options.hasCamera);
    EXPECT_DOUBLE_EQ(options.eye[1], -20.5);
    EXPECT_DOUBLE_EQ(options.eye[2], 30.0);
    EXPECT_DOUBLE_EQ(options.target[2], 1.5);

    for (char const* bad : {"1,2,3,4,5", "1,2,3,4,5,6,7", "1,2,,4,5,6", "1,2,3,4,5,", ",1,2,3,4,5", "1,2,3,4,5,nan",
                            "1,2,3,inf,5,6", "1,2,3,4,5,6x", "1,2,3,1,2,3", "1;2;3;4;5;6"}) {
        ViewOptions refused;
        EXPECT_FALSE(parse({"--camera", bad}, refused)) << bad;
        EXPECT_FALSE(refused.hasCamera) << bad;
    }
    ViewOptions both;
    EXPECT_FALSE(parse({"--view", "top", "--camera", "1,2,3,4,5,6"}, both));
    EXPECT_FALSE(parse({"--camera", "1,2,3,4,5,6", "--view", "top"}, both));
}

TEST(ViewOptionParserTest, ModelNamesAndRenderOptions)
{
    ViewOptions options;
    ASSERT_TRUE(parse({"house.ifc", "--capture", "out.png", "--view", "front", "--style", "shaded", "--background",
                       "#FF8000", "--fog", "--no-shadows", "--no-ssao",
                       "--no-culling"},
                      options));
    EXPECT_EQ(options.modelPath, "house.ifc");
    EXPECT_EQ(options.capturePath, "out.png");
    EXPECT_EQ(options.viewName, "front");
    EXPECT_EQ(options.style, CKVRenderConfig::kShaded);
    EXPECT_EQ(options.background, ViewOptions::Background::kColour);
    EXPECT_DOUBLE_EQ(options.backgroundColour[0], 1.0);
    EXPECT_NEAR(options.backgroundColour[1], 128.0 / 255.0, 1e-12);
    EXPECT_DOUBLE_EQ(options.backgroundColour[2], 0.0);
    EXPECT_TRUE(options.fog);
    EXPECT_FALSE(options.shadows);
    EXPECT_FALSE(options.ambientOcclusion);
    EXPECT_FALSE(options.culling);

    std::string error;
    ViewOptions refused;
    EXPECT_FALSE(parse({"a.ifc", "b.ifc"}, refused, &error));
    EXPECT_NE(error.find("b.ifc"), std::string::npos);
    EXPECT_FALSE(parse({"--capture"}, refused, &error));
    EXPECT_NE(error.find("needs a value"), std::string::npos);
    EXPECT_FALSE(parse({"--frobnicate"}, refused));
    EXPECT_FALSE(parse({"--view", "sideways"}, refused));
    EXPECT_FALSE(parse({"--style", "cartoon"}, refused));
    EXPECT_FALSE(parse({"--style", "4"}, refused));
    ViewOptions numbered;
    ASSERT_TRUE(parse({"--style", "3"}, numbered));
    EXPECT_EQ(numbered.style, CKVRenderConfig::kEdgesOnly);
    EXPECT_FALSE(parse({"--background", "1.2,0,0"}, refused));
    EXPECT_FALSE(parse({"--background", "#12345G"}, refused));
    EXPECT_FALSE(parse({"--builtin", "model.obj"}, refused));
}

TEST(ViewRenderSettingsTest, OptionsAndKeysReachTheRenderConfiguration)
{
    ViewOptions options;
    options.background = ViewOptions::Background::kGradient;
    options.fog = true;
    ViewRenderSettings settings(options);
    EXPECT_EQ(settings.getConfig().getBackGroundConfig().getBackGroundType(), CKVBackGroundConfig::kGradient);
    EXPECT_TRUE(settings.getConfig().getFogUse());

    ViewKeyBindings keys(settings);
    EXPECT_EQ(keys.handleKey('f', 0).message, "fog: off");
    EXPECT_FALSE(settings.getConfig().getFogUse());
    // Shadows are on by default; the key turns them off and on again.
    EXPECT_NE(settings.getConfig().getShadowLevel(), CKVRenderConfig::kLevelOff);
    EXPECT_EQ(keys.handleKey('d', 0).message, "shadows: off");
    EXPECT_EQ(settings.getConfig().getShadowLevel(), CKVRenderConfig::kLevelOff);
    EXPECT_EQ(keys.handleKey('d', 0).message, "shadows: on");
    EXPECT_NE(settings.getConfig().getSSAOLevel(), CKVRenderConfig::kLevelOff);
    EXPECT_EQ(keys.handleKey('a', 0).message, "ambient occlusion: off");
    EXPECT_EQ(settings.getConfig().getSSAOLevel(), CKVRenderConfig::kLevelOff);
    // Culling is on by default, pre-pass and culling pass together.
    EXPECT_TRUE(settings.getConfig().getUseDepthPrePass() && settings.getConfig().getUseOcclusionCull());
    EXPECT_EQ(keys.handleKey('c', 0).message, "instance culling: off");
    EXPECT_FALSE(settings.getConfig().getUseDepthPrePass() || settings.getConfig().getUseOcclusionCull());

    EXPECT_EQ(keys.handleKey('q', 0).action, ViewKeyBindings::Action::kQuit);
    EXPECT_EQ(keys.handleKey(0, CKVEvent::kEscape | CKVEvent::kShift).action, ViewKeyBindings::Action::kQuit);
    EXPECT_EQ(keys.handleKey('r', 0).action, ViewKeyBindings::Action::kResetView);
    ViewKeyBindings::Result const unknown = keys.handleKey('x', 0);
    EXPECT_EQ(unknown.action, ViewKeyBindings::Action::kNone);
    EXPECT_TRUE(unknown.message.empty());
}

// An effect the backend does not draw yet is never claimed: its option is
// refused, its key says so and leaves the configuration alone, and the
// cycling keys pass over it. Once its row in ViewFeatures turns on, the same
// switches work.
TEST(ViewRenderSettingsTest, EffectsNotDrawnYetAreRefusedOrSaidSo)
{
    bool const edges = ViewFeatures::isAvailable(ViewFeature::kEdges);
    bool const atmosphere = ViewFeatures::isAvailable(ViewFeature::kAtmosphere);
    ViewOptions options;
    std::string error;
    EXPECT_EQ(parse({"--style", "lines"}, options, &error), edges) << error;
    EXPECT_EQ(parse({"--background", "sky"}, options, &error), atmosphere) << error;
    if (!atmosphere) {
        EXPECT_NE(error.find("not available"), std::string::npos) << error;
    }

    ViewRenderSettings settings;
    ViewKeyBindings keys(settings);
    // Four presses of each cycling key: every style and background it stops
    // at must be drawable.
    for (int i = 0; i < 4; ++i) {
        keys.handleKey('s', 0);
        EXPECT_TRUE(edges || settings.getConfig().getRenderStyle() == CKVRenderConfig::kShaded);
        keys.handleKey('b', 0);
        EXPECT_TRUE(atmosphere || !settings.getConfig().getAtmosphericScattteringUse());
    }

    struct Switch
    {
        int key;
        ViewFeature feature;
        std::function<bool(CKVRenderConfig const&)> isOn;
    };
    Switch const switches[] = {
        {'d', ViewFeature::kShadows, [](CKVRenderConfig const& c) { return c.getShadowLevel() != CKVRenderConfig::kLevelOff; }},
        {'a', ViewFeature::kAmbientOcclusion, [](CKVRenderConfig const& c) { return c.getSSAOLevel() != CKVRenderConfig::kLevelOff; }},
        {'m', ViewFeature::kAtmosphere, [](CKVRenderConfig const& c) { return c.getAtmosphericScattteringUse(); }},
    };
    for (Switch const& effect : switches) {
        bool const available = ViewFeatures::isAvailable(effect.feature);
        bool const before = effect.isOn(settings.getConfig());
        std::string const message = keys.handleKey(effect.key, 0).message;
        EXPECT_EQ(effect.isOn(settings.getConfig()), available ? !before : before) << message;
        if (!available) {
            EXPECT_EQ(message, ViewFeatures::notAvailable(effect.feature));
        }
    }
}

// The time of day as the sun's direction: a wrong sign puts the sunrise in
// the west or the noon sun below the horizon, and the sky goes dark.
TEST(ViewSunPositionTest, TimesParseAndPlaceTheSunOnItsDailyArc)
{
    ViewOptions options;
    ASSERT_TRUE(parse({"--time", "18:30"}, options));
    EXPECT_DOUBLE_EQ(options.timeOfDay, 18.5);
    for (char const* bad : {"", "25", "24:01", "7:5", "07:60", "-1", "12:", ":30", "12:30:00", "noon"}) {
        ViewOptions refused;
        std::string error;
        EXPECT_FALSE(parse({"--time", bad}, refused, &error)) << bad;
        EXPECT_NE(error.find("--time"), std::string::npos) << error;
    }

    struct Case
    {
        double hours;
        osg::Vec3f expected;
        float tolerance;
    };
    Case const cases[] = {
        {6.0, {1.0f, 0.0f, 0.0f}, 1e-3f},    // sunrise in the east
        {12.0, {0.0f, -0.009f, 1.0f}, 1e-2f}, // noon, nearly overhead, a little south
        {18.0, {-1.0f, 0.0f, 0.0f}, 1e-3f},  // sunset in the west
        {24.0, {0.0f, 0.009f, -1.0f}, 1e-2f}, // midnight: night
    };
    for (Case const& c : cases) {
        CKVVec3<float> const d = ViewSunPosition::directionAt(c.hours);
        EXPECT_NEAR(d.x, c.expected.x(), c.tolerance) << c.hours;
        EXPECT_NEAR(d.y, c.expected.y(), c.tolerance) << c.hours;
        EXPECT_NEAR(d.z, c.expected.z(), c.tolerance) << c.hours;
    }

    // The default view stands under the daylight sky; grey switches back.
    EXPECT_EQ(ViewRenderSettings(ViewOptions()).getConfig().getBackGroundConfig().getBackGroundType(),
              CKVBackGroundConfig::kAtmosphere);
    ASSERT_TRUE(parse({"--background", "grey"}, options));
    EXPECT_EQ(ViewRenderSettings(options).getConfig().getBackGroundConfig().getBackGroundType(),
              CKVBackGroundConfig::kSolidColor);
}

TEST(ViewSunPositionTest, TheHourKeyMovesTheSunRoundTheClock)
{
    ViewOptions options;
    ASSERT_TRUE(parse({"--time", "23:30"}, options));
    ViewRenderSettings settings(options);
    ViewKeyBindings keys(settings);
    EXPECT_EQ(keys.handleKey('t', 0).message, "time: 00:00");
    CKVVec3<float> const midnight = ViewSunPosition::directionAt(0.0);
    EXPECT_FLOAT_EQ(settings.getConfig().getLightPosition().z, midnight.z);
    EXPECT_EQ(keys.handleKey('t', 0).message, "time: 01:00");
}
