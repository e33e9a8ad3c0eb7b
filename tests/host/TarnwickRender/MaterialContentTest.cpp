#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVLineMaterial.h"
#include "TarnwickRender/CKVPhysicalMaterial.h"
#include "TarnwickRender/CKVPhysicalWaterMaterial.h"
#include "TarnwickRender/CKVTerrainMaterial.h"
#include "TarnwickRender/CKVWaterMaterial.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

using namespace Kelvor;

namespace {

struct MaterialLess
{
    bool operator()(kv_shared_ptr<CKVBasicMaterial> const& a, kv_shared_ptr<CKVBasicMaterial> const& b) const
    {
        return a->compare(*b) < 0;
    }
};

int sign(int v)
{
    return (v > 0) - (v < 0);
}

} // namespace

TEST(MaterialContent, CompareIsATotalOrderAcrossClasses)
{
    std::vector<kv_shared_ptr<CKVBasicMaterial>> all;
    all.emplace_back(new CKVBasicMaterial);
    all.emplace_back(new CKVLineMaterial);
    all.emplace_back(new CKVPhysicalMaterial);
    all.emplace_back(new CKVWaterMaterial);
    all.emplace_back(new CKVPhysicalWaterMaterial);
    all.emplace_back(new CKVTerrainMaterial);
    CKVBasicMaterial* red = new CKVBasicMaterial;
    red->setRGB(255, 0, 0);
    all.emplace_back(red);
    CKVBasicMaterial* textured = new CKVBasicMaterial;
    textured->setTexture("brick.png");
    all.emplace_back(textured);
    CKVLineMaterial* wide = new CKVLineMaterial;
    wide->setLineWidth(3.0f);
    all.emplace_back(wide);

    for (auto const& a : all) {
        EXPECT_EQ(0, a->compare(*a));
        for (auto const& b : all) {
            if (a != b) {
                EXPECT_NE(0, a->compare(*b)) << a->getType() << " vs " << b->getType();
            }
            EXPECT_EQ(sign(a->compare(*b)), -sign(b->compare(*a)));
            for (auto const& c : all) {
                if (a->compare(*b) < 0 && b->compare(*c) < 0) {
                    EXPECT_LT(a->compare(*c), 0);
                }
            }
        }
    }
}

TEST(MaterialContent, EqualMaterialsCanBeShared)
{
    std::set<kv_shared_ptr<CKVBasicMaterial>, MaterialLess> shared;
    CKVPhysicalMaterial* steel = new CKVPhysicalMaterial;
    steel->setMetallic(1.0f);
    steel->setNormalMap("steel_n.png");
    shared.insert(steel);
    // A clone is the same class and compares equal, so it is not added.
    kv_shared_ptr<CKVBasicMaterial> copy(steel->clone());
    EXPECT_TRUE(copy->isKindOf(CKVPhysicalMaterial::desc()));
    EXPECT_FALSE(shared.insert(copy).second);

    static_cast<CKVPhysicalMaterial*>(copy.get())->setAoMap("steel_ao.png");
    EXPECT_TRUE(shared.insert(copy).second);

    // An unused depth range does not tell materials apart; a used one does.
    kv_shared_ptr<CKVBasicMaterial> plain(new CKVBasicMaterial);
    kv_shared_ptr<CKVBasicMaterial> unusedRange(new CKVBasicMaterial);
    unusedRange->setDepthRange(false, 0.2f, 0.4f);
    EXPECT_EQ(0, plain->compare(*unusedRange));
    unusedRange->setDepthRange(true, 0.2f, 0.4f);
    EXPECT_NE(0, plain->compare(*unusedRange));

    // Terrain layers count, in order.
    kv_shared_ptr<CKVTerrainMaterial> ab(new CKVTerrainMaterial);
    ab->addTexture("a.dds");
    ab->addTexture("b.dds");
    kv_shared_ptr<CKVTerrainMaterial> ba(new CKVTerrainMaterial);
    ba->addTexture("b.dds");
    ba->addTexture("a.dds");
    EXPECT_NE(0, ab->compare(*ba));
    kv_shared_ptr<CKVBasicMaterial> abCopy(ab->clone());
    EXPECT_EQ(0, ab->compare(*abCopy));
}

TEST(MaterialContent, ProgramParameterFollowsTheMaterialClass)
{
    CKVProgramParam param;
    param.addParam(CKVProgramParam::kUseInstanceMatrix);

    CKVBasicMaterial basic;
    basic.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kSurface, param.getType());
    EXPECT_FALSE(param.hasParam(CKVProgramParam::kUseTexture));
    EXPECT_TRUE(param.hasParam(CKVProgramParam::kUseInstanceMatrix)); // not the material's to clear

    CKVPhysicalMaterial pbr;
    pbr.setTexture("albedo.png");
    pbr.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kSurfacePBR, param.getType());
    EXPECT_TRUE(param.hasParam(CKVProgramParam::kUseTexture));

    // Water ignores the albedo texture switch even with a texture set.
    CKVWaterMaterial water;
    water.setTexture("ignored.png");
    water.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kWater, param.getType());
    EXPECT_FALSE(param.hasParam(CKVProgramParam::kUseTexture));

    CKVPhysicalWaterMaterial waves;
    waves.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kPhysicalWater, param.getType());
    CKVTerrainMaterial terrain;
    terrain.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kTerrain, param.getType());
    CKVLineMaterial line;
    line.getProgramParam(param);
    EXPECT_EQ(CKVProgramParam::kFlatColor, param.getType());
}

TEST(MaterialContent, ClassesAreToldApartByRecord)
{
    // The backend picks the material branch by class record; physical water
    // must not pass for plain water.
    CKVPhysicalWaterMaterial waves;
    EXPECT_FALSE(waves.isKindOf(CKVWaterMaterial::desc()));
    EXPECT_TRUE(waves.isKindOf(CKVBasicMaterial::desc()));
    kv_shared_ptr<CKVBasicMaterial> made(static_cast<CKVBasicMaterial*>(
        CKVRuntimeClass::find("CKVLineMaterial")->createObject()));
    ASSERT_TRUE(made);
    EXPECT_EQ(CKVBasicMaterial::kLine, made->getType());
}
