#include "scene/CKVSceneNodeImp.h"
#include "scene/CKVUniformImp.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <osg/StateSet>
#include <osg/Vec2>
#include <osg/Vec4>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Kelvor {
namespace {

class ForeignUniform : public CKVUniform
{
public:
    ForeignUniform() : CKVUniform("Foreign_F", kFloat) {}
};

kv_shared_ptr<CKVUniformImp> makeUniform(char const* name, unsigned int type)
{
    CKVUniform* uniform = createUniformImp(name, type);
    EXPECT_NE(uniform, nullptr) << type;
    return kv_shared_ptr<CKVUniformImp>(static_cast<CKVUniformImp*>(uniform));
}

TEST(UniformImpTest, FactoryRefusesTypesOutsideTheTableAndMapsEveryOther)
{
    EXPECT_EQ(createUniformImp("Zero", 0), nullptr);
    EXPECT_EQ(createUniformImp("Beyond", 14), nullptr);

    osg::Uniform::Type const expected[] = {
        osg::Uniform::BOOL,
        osg::Uniform::INT,
        osg::Uniform::INT_VEC2,
        osg::Uniform::INT_VEC3,
        osg::Uniform::INT_VEC4,
        osg::Uniform::UNSIGNED_INT,
        osg::Uniform::UNSIGNED_INT_VEC2,
        osg::Uniform::UNSIGNED_INT_VEC3,
        osg::Uniform::UNSIGNED_INT_VEC4,
        osg::Uniform::FLOAT,
        osg::Uniform::FLOAT_VEC2,
        osg::Uniform::FLOAT_VEC3,
        osg::Uniform::FLOAT_VEC4,
    };
    for (unsigned int type = 1; type <= 13; ++type) {
        kv_shared_ptr<CKVUniformImp> uniform = makeUniform("Value_U", type);
        ASSERT_TRUE(uniform.valid());
        EXPECT_EQ(uniform->getDataType(), type);
        osg::Uniform* osgUniform = uniform->getOSGUniform();
        ASSERT_NE(osgUniform, nullptr) << type;
        EXPECT_EQ(osgUniform->getType(), expected[type - 1]) << type;
        EXPECT_EQ(osgUniform->getName(), "Value_U");
        EXPECT_EQ(osgUniform->getNumElements(), 1u);
    }
}

TEST(UniformImpTest, MadeByNameItHasNoUniformAndRefusesEverything)
{
    CKVRuntimeClass const* record = CKVRuntimeClass::find("CKVUniformImp");
    ASSERT_NE(record, nullptr);
    std::unique_ptr<CKVObject> object(record->createObject());
    ASSERT_NE(object, nullptr);
    ASSERT_TRUE(object->isKindOf(CKVUniform::desc()));
    auto* uniform = static_cast<CKVUniformImp*>(object.get());
    EXPECT_EQ(uniform->getOSGUniform(), nullptr);
    EXPECT_FALSE(uniform->setNumElements(2));
    EXPECT_FALSE(uniform->setValue(1.0f));
    EXPECT_FALSE(uniform->setValue(true));
    float const plane[4] = {0.0f, 0.0f, 1.0f, 0.0f};
    EXPECT_FALSE(uniform->setElement(plane, 0));
}

TEST(UniformImpTest, ValuesOfTheWrongKindChangeNothing)
{
    kv_shared_ptr<CKVUniformImp> vec2 = makeUniform("Offset_V2", CKVUniform::kFloatVec2);
    float const offset[2] = {1.5f, -2.0f};
    ASSERT_TRUE(vec2->setValue(offset));

    float const vec3[3] = {7.0f, 7.0f, 7.0f};
    int const ivec2[2] = {7, 7};
    unsigned int const uvec2[2] = {7u, 7u};
    EXPECT_FALSE(vec2->setValue(7.0f));
    EXPECT_FALSE(vec2->setValue(vec3));
    EXPECT_FALSE(vec2->setValue(ivec2));
    EXPECT_FALSE(vec2->setValue(uvec2));
    EXPECT_FALSE(vec2->setValue(7));
    EXPECT_FALSE(vec2->setValue(true));

    osg::Vec2 stored;
    ASSERT_TRUE(vec2->getOSGUniform()->get(stored));
    EXPECT_EQ(stored, osg::Vec2(1.5f, -2.0f));
    EXPECT_EQ(vec2->getFloatData(), (std::vector<float>{1.5f, -2.0f}));

    // Integers and unsigned integers are told apart too.
    kv_shared_ptr<CKVUniformImp> count = makeUniform("Count_U", CKVUniform::kUInt);
    ASSERT_TRUE(count->setValue(3u));
    EXPECT_FALSE(count->setValue(5));
    EXPECT_FALSE(count->setValue(false));
    unsigned int storedCount = 0;
    ASSERT_TRUE(count->getOSGUniform()->get(storedCount));
    EXPECT_EQ(storedCount, 3u);

    kv_shared_ptr<CKVUniformImp> ivec3 = makeUniform("Cell_I3", CKVUniform::kIntVec3);
    int const cell[3] = {-1, 2, 40};
    ASSERT_TRUE(ivec3->setValue(cell));
    int x = 0, y = 0, z = 0;
    ASSERT_TRUE(ivec3->getOSGUniform()->get(x, y, z));
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, 2);
    EXPECT_EQ(z, 40);
}

TEST(UniformImpTest, PlaneArraysTakeElementsAfterResizing)
{
    kv_shared_ptr<CKVUniformImp> planes = makeUniform("ClipPlanes_V4", CKVUniform::kFloatVec4);
    osg::Uniform* first = planes->getOSGUniform();
    osg::ref_ptr<osg::Uniform> keep = first;

    ASSERT_TRUE(planes->setNumElements(3));
    EXPECT_FALSE(planes->setNumElements(0));
    osg::Uniform* array = planes->getOSGUniform();
    ASSERT_NE(array, nullptr);
    EXPECT_NE(array, first);
    EXPECT_EQ(array->getNumElements(), 3u);
    EXPECT_EQ(array->getType(), osg::Uniform::FLOAT_VEC4);
    EXPECT_EQ(array->getName(), "ClipPlanes_V4");
    EXPECT_EQ(first->getNumElements(), 1u);

    float const plane[4] = {0.0f, 0.0f, 1.0f, -5.0f};
    ASSERT_TRUE(planes->setElement(plane, 2));
    float const outside[4] = {9.0f, 9.0f, 9.0f, 9.0f};
    EXPECT_FALSE(planes->setElement(outside, 3));

    osg::Vec4 stored;
    ASSERT_TRUE(array->getElement(2, stored));
    EXPECT_EQ(stored, osg::Vec4(0.0f, 0.0f, 1.0f, -5.0f));
    ASSERT_TRUE(array->getElement(0, stored));
    EXPECT_EQ(stored, osg::Vec4());
    EXPECT_EQ(planes->getFloatData().size(), 12u);

    // Only four-component floats take elements.
    kv_shared_ptr<CKVUniformImp> vec3 = makeUniform("Normal_V3", CKVUniform::kFloatVec3);
    ASSERT_TRUE(vec3->setNumElements(3));
    EXPECT_FALSE(vec3->setElement(plane, 0));
}

TEST(UniformImpTest, SceneNodesCarryTheirUniformsOnTheTransformStateSet)
{
    kv_shared_ptr<CKVSceneNode> node(createSceneNodeImp());
    ASSERT_TRUE(node && node->isKindOf(CKVSceneNodeImp::desc()));
    osg::Node* transform = static_cast<CKVSceneNodeImp*>(node.get())->getOSGNode();

    kv_shared_ptr<CKVUniformImp> tint = makeUniform("Tint_V4", CKVUniform::kFloatVec4);
    kv_shared_ptr<CKVUniform> foreign(new ForeignUniform);
    kv_shared_ptr<CKVUniform> empty(
        static_cast<CKVUniform*>(CKVRuntimeClass::find("CKVUniformImp")->createObject()));

    EXPECT_FALSE(node->addUniform(foreign.get()));
    EXPECT_FALSE(node->addUniform(empty.get()));
    EXPECT_EQ(node->getNumUniform(), 0u);

    ASSERT_TRUE(node->addUniform(tint.get()));
    EXPECT_EQ(node->getNumUniform(), 1u);
    osg::StateSet* stateSet = transform->getStateSet();
    ASSERT_NE(stateSet, nullptr);
    ASSERT_EQ(stateSet->getUniformList().size(), 1u);
    osg::StateSet::RefUniformPair const* pair = stateSet->getUniformPair("Tint_V4");
    ASSERT_NE(pair, nullptr);
    EXPECT_EQ(pair->first.get(), tint->getOSGUniform());
    // Added ON, not as an override: a child node's own value of the same
    // name still wins below this node.
    EXPECT_EQ(pair->second & osg::StateAttribute::OVERRIDE, 0u);

    // A value set afterwards reaches the uniform the node holds.
    float const red[4] = {1.0f, 0.0f, 0.0f, 1.0f};
    ASSERT_TRUE(tint->setValue(red));
    osg::Vec4 stored;
    ASSERT_TRUE(stateSet->getUniform("Tint_V4")->get(stored));
    EXPECT_EQ(stored, osg::Vec4(1.0f, 0.0f, 0.0f, 1.0f));

    EXPECT_FALSE(node->removeUniform(foreign.get()));
    ASSERT_TRUE(node->removeUniform(tint.get()));
    EXPECT_EQ(node->getNumUniform(), 0u);
    EXPECT_TRUE(stateSet->getUniformList().empty());
}

} // namespace
} // namespace Kelvor
