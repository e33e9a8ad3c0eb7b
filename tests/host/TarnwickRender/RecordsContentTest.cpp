#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRenderConfig.h"
#include "TarnwickRender/CKVSelectionResult.h"
#include "TarnwickRender/CKVTextGeometry.h"
#include "TarnwickRender/CKVUniform.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace Kelvor;

namespace {

class TestUniform : public CKVUniform
{
public:
    TestUniform(char const* name, unsigned int type) : CKVUniform(name, type) {}
};

class TestText : public CKVTextGeometry
{
};

} // namespace

TEST(ProgramParamContent, KeysAProgramCache)
{
    std::map<CKVProgramParam, std::string> cache;
    CKVProgramParam plain(CKVProgramParam::kSurface);
    CKVProgramParam textured(CKVProgramParam::kSurface);
    textured.addParam(CKVProgramParam::kUseTexture);
    CKVProgramParam texturedAgain(CKVProgramParam::kSurface);
    texturedAgain.addParam(CKVProgramParam::kUseTexture);
    texturedAgain.addParam(CKVProgramParam::kUseTexture);
    CKVProgramParam pbr(CKVProgramParam::kSurfacePBR);

    cache[plain] = "plain";
    cache[textured] = "textured";
    cache[pbr] = "pbr";
    cache[texturedAgain] = "textured again";
    EXPECT_EQ(3u, cache.size());
    EXPECT_EQ("textured again", cache[textured]);

    // A low kind with many bits still sorts before a higher kind.
    CKVProgramParam busy(CKVProgramParam::kSurface);
    busy.addParam(CKVProgramParam::kUseAntiRepeatTexture);
    EXPECT_TRUE(busy < pbr);
    EXPECT_FALSE(pbr < busy);
    EXPECT_FALSE(plain < plain);
}

TEST(ProgramParamContent, HasParamNeedsEveryBit)
{
    CKVProgramParam param;
    param.addParam(CKVProgramParam::kUseAlphaTest);
    EXPECT_TRUE(param.hasParam(CKVProgramParam::kUseAlphaTest));
    EXPECT_FALSE(param.hasParam(static_cast<CKVProgramParam::Param>(CKVProgramParam::kUseAlphaTest |
                                                                     CKVProgramParam::kUseTexture)));
    EXPECT_FALSE(param.hasParam(static_cast<CKVProgramParam::Param>(0)));
    param.removeParam(CKVProgramParam::kUseAlphaTest);
    EXPECT_EQ(0u, param.getParams());
}

TEST(UniformContent, SettersAcceptOnlyTheirOwnType)
{
    TestUniform vec2("FlowDir", CKVUniform::kFloatVec2);
    float const two[2] = {0.5f, 0.25f};
    float const three[3] = {1, 2, 3};
    EXPECT_TRUE(vec2.setValue(two));
    EXPECT_FALSE(vec2.setValue(1.0f));
    EXPECT_FALSE(vec2.setValue(three));
    int const twoInts[2] = {7, 8};
    EXPECT_FALSE(vec2.setValue(twoInts));
    EXPECT_EQ((std::vector<float>{0.5f, 0.25f}), vec2.getFloatData());

    TestUniform flag("Enabled", CKVUniform::kBool);
    EXPECT_FALSE(flag.setValue(1));
    EXPECT_TRUE(flag.setValue(true));
    EXPECT_EQ((std::vector<int>{1}), flag.getIntData());

    TestUniform count("Count", CKVUniform::kUInt);
    EXPECT_FALSE(count.setValue(3)); // an int is not an unsigned
    EXPECT_TRUE(count.setValue(3u));
}

TEST(UniformContent, PlaneArraysAreSetByElement)
{
    TestUniform planes("ClipPlaneArr", CKVUniform::kFloatVec4);
    ASSERT_TRUE(planes.setNumElements(3));
    float const plane[4] = {0, 0, 1, -2};
    EXPECT_TRUE(planes.setElement(plane, 2));
    EXPECT_FALSE(planes.setElement(plane, 3));
    ASSERT_EQ(12u, planes.getFloatData().size());
    EXPECT_FLOAT_EQ(-2.0f, planes.getFloatData()[11]);
    EXPECT_FLOAT_EQ(0.0f, planes.getFloatData()[3]);

    TestUniform vec3("Sun", CKVUniform::kFloatVec3);
    EXPECT_FALSE(vec3.setElement(plane, 0));
}

TEST(UniformContent, AnInvalidTypeRefusesEverything)
{
    TestUniform none("Nothing", 0);
    TestUniform beyond("Nothing", 14);
    EXPECT_EQ(CKVUniform::kInvalid, beyond.getDataType());
    EXPECT_FALSE(none.setValue(1.0f));
    EXPECT_FALSE(none.setValue(true));
    EXPECT_FALSE(none.setNumElements(2));
    EXPECT_EQ(0u, none.getNumElements());
}

TEST(TextContent, DirectionMustBePerpendicularAndNonZero)
{
    TestText text;
    CKVVector3D direction;
    CKVVector3D normal;
    EXPECT_TRUE(text.setDirection(CKVVector3D(0, 1, 0), CKVVector3D(1, 0, 0)));
    EXPECT_FALSE(text.setDirection(CKVVector3D(1, 0, 0), CKVVector3D(1, 0, 0)));
    EXPECT_FALSE(text.setDirection(CKVVector3D(0, 0, 0), CKVVector3D(0, 0, 1)));
    EXPECT_FALSE(text.setDirection(CKVVector3D(1, 0, 0), CKVVector3D(0.01, 0, 1)));
    text.getDirection(direction, normal);
    EXPECT_EQ(CKVVector3D(0, 1, 0), direction);
    EXPECT_EQ(CKVVector3D(1, 0, 0), normal);

    text.setText(nullptr);
    EXPECT_STREQ(L"", text.getText());
}

TEST(SelectionResultContent, ACopyKeepsTheDrawableAlive)
{
    CKVDrawable* drawable = new CKVDrawable(42);
    kv_shared_ptr<CKVSelectionResult> copy;
    {
        CKVSelectionResult result;
        result.setDrawable(drawable);
        result.setPosition(CKVPoint3D(1, 2, 3));
        result.setInstanceIndex(5);
        copy = new CKVSelectionResult(result);
    }
    ASSERT_TRUE(copy->valid());
    EXPECT_EQ(42u, copy->getDrawable()->getId());
    EXPECT_EQ(5u, copy->getInstanceIndex());
    EXPECT_EQ(CKVPoint3D(1, 2, 3), copy->getPosition());
    EXPECT_EQ(1u, drawable->refCount());
}

TEST(RenderConfigContent, CopiesCarryTheBackground)
{
    CKVRenderConfig config;
    EXPECT_GT(config.getLightPosition().z, 0.0f); // day

    CKVBackGroundConfig sky;
    sky.setBackGroundType(CKVBackGroundConfig::kSkyBox);
    EXPECT_TRUE(sky.setSingleSkyBoxPath(CKVBackGroundConfig::kNegativeZ, "/sky/nz.png"));
    EXPECT_FALSE(sky.setSingleSkyBoxPath(static_cast<CKVBackGroundConfig::SkyBoxFace>(6), "/sky/x.png"));
    config.setBackGroundConfig(sky);
    CKVRenderConfig copy;
    copy = config;
    EXPECT_TRUE(copy.getBackGroundConfig() == sky);
    CKVBackGroundConfig const& copied = copy.getBackGroundConfig();
    EXPECT_STREQ("/sky/nz.png", copied.getSingleSkyBoxPath(CKVBackGroundConfig::kNegativeZ).c_str());
    EXPECT_STREQ("", copied.getSingleSkyBoxPath(static_cast<CKVBackGroundConfig::SkyBoxFace>(-1)).c_str());
}
