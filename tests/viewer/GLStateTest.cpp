#include "viewer/CKVLastModelMatrixStore.h"
#include "viewer/CKVOSGState.h"
#include "viewer/DepthFunc.h"
#include "viewer/DepthMask.h"
#include "viewer/DepthRange.h"

#include <gtest/gtest.h>

#include <osg/Depth>
#include <osg/Geometry>
#include <osg/StateSet>

#include <map>
#include <set>
#include <string>

namespace Kelvor {
namespace {

// The attributes have protected destructors, like every osg::Referenced.
template <typename T, typename... Args>
osg::ref_ptr<T> make(Args... args)
{
    return new T(args...);
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

// compare() must be a total order: state sets sort and merge by it.
void expectOrdered(osg::StateAttribute const& lower, osg::StateAttribute const& higher)
{
    EXPECT_EQ(lower.compare(higher), -1) << lower.className() << " vs " << higher.className();
    EXPECT_EQ(higher.compare(lower), 1) << higher.className() << " vs " << lower.className();
}

TEST(DepthAttributesTest, DefaultsAreTheGLDefaultsTheStateRestoresOnLeavingAStateSet)
{
    // The state applies cloneType() of an attribute when no state set sets it
    // any more, so the defaults are what GL starts with.
    osg::ref_ptr<DepthFunc> func = new DepthFunc(GL_GREATER);
    osg::ref_ptr<DepthMask> mask = new DepthMask(false);
    osg::ref_ptr<DepthRange> range = new DepthRange(0.25, 0.5);
    osg::ref_ptr<DepthFunc> funcDefault = static_cast<DepthFunc*>(func->cloneType());
    osg::ref_ptr<DepthMask> maskDefault = static_cast<DepthMask*>(mask->cloneType());
    osg::ref_ptr<DepthRange> rangeDefault = static_cast<DepthRange*>(range->cloneType());

    EXPECT_EQ(funcDefault->getFunction(), static_cast<GLenum>(GL_LESS));
    EXPECT_TRUE(maskDefault->getMask());
    EXPECT_EQ(rangeDefault->getZNear(), 0.0);
    EXPECT_EQ(rangeDefault->getZFar(), 1.0);
}

TEST(DepthAttributesTest, EachHasItsOwnTypeSoAStateSetHoldsThemSideBySide)
{
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setAttribute(new DepthFunc(GL_LEQUAL));
    stateSet->setAttribute(new DepthMask(false));
    stateSet->setAttribute(new DepthRange(0.0, 0.5));
    stateSet->setAttribute(new osg::Depth);

    EXPECT_EQ(stateSet->getAttributeList().size(), 4u);
    auto const* func =
        dynamic_cast<DepthFunc const*>(stateSet->getAttribute(static_cast<osg::StateAttribute::Type>(DepthFunc::kType)));
    ASSERT_NE(func, nullptr);
    EXPECT_EQ(func->getFunction(), static_cast<GLenum>(GL_LEQUAL));
}

TEST(DepthAttributesTest, CompareOrdersByValueWithinAClass)
{
    osg::ref_ptr<DepthFunc> less = new DepthFunc(GL_LESS);
    EXPECT_EQ(less->compare(*less), 0);
    EXPECT_EQ(less->compare(*make<DepthFunc>(GL_LESS)), 0);
    expectOrdered(*make<DepthFunc>(GL_LESS), *make<DepthFunc>(GL_GREATER));

    EXPECT_EQ(make<DepthMask>(false)->compare(*make<DepthMask>(false)), 0);
    expectOrdered(*make<DepthMask>(false), *make<DepthMask>(true));

    // Near decides before far.
    expectOrdered(*make<DepthRange>(0.0, 1.0), *make<DepthRange>(0.1, 0.2));
    expectOrdered(*make<DepthRange>(0.1, 0.2), *make<DepthRange>(0.1, 0.3));
    EXPECT_EQ(make<DepthRange>(0.1, 0.2)->compare(*make<DepthRange>(0.1, 0.2)), 0);
}

TEST(DepthAttributesTest, CompareAcrossClassesIsConsistentAndNeverEqual)
{
    osg::ref_ptr<osg::StateAttribute> attributes[] = {new DepthFunc, new DepthMask, new DepthRange, new osg::Depth};
    for (auto const& a : attributes)
    {
        for (auto const& b : attributes)
        {
            if (a == b)
                continue;
            // osg::Depth's own compare orders by type_info, not by name;
            // only the direction from our classes is ours to guarantee.
            if (dynamic_cast<osg::Depth*>(a.get()) != nullptr)
                continue;
            int const ab = a->compare(*b);
            EXPECT_NE(ab, 0) << a->className() << " " << b->className();
            if (dynamic_cast<osg::Depth*>(b.get()) == nullptr)
            {
                EXPECT_EQ(sign(ab), -sign(b->compare(*a))) << a->className() << " " << b->className();
            }
        }
    }
}

TEST(OSGStateAliasTest, LocationsFollowTheBackendTableAndNeverCollide)
{
    osg::ref_ptr<CKVOSGState> state = new CKVOSGState;
    state->setUpVertexAttribAliases();

    // Shaders declare the instance rows as vec4 attributes.
    for (unsigned int row = 0; row < CKVOSGState::kInstanceRowCount; ++row)
        EXPECT_EQ(state->getInstanceRowAlias(row)._declaration, "vec4 ");

    // Linking binds attributes by this list when aliasing is on.
    osg::Program::AttribBindingList const& bindings = state->getAttributeBindingList();
    std::map<std::string, GLuint> const expected = {
        {"osg_Vertex", 0},          {"osg_Normal", 1},          {"osg_MultiTexCoord0", 2},
        {"kv_InstanceMatrixR1", 3}, {"kv_InstanceMatrixR2", 4}, {"kv_InstanceMatrixR3", 5},
        {"kv_InstanceMatrixR4", 6}, {"osg_Color", 7}};
    for (auto const& [name, location] : expected)
    {
        auto const found = bindings.find(name);
        ASSERT_NE(found, bindings.end()) << name;
        EXPECT_EQ(found->second, location) << name;
    }

    // Unused texture units stay clear of the table and of each other.
    // OpenSceneGraph indexes eight texture units when aliasing is on.
    ASSERT_GE(state->getTexCoordAliasList().size(), 8u);
    std::set<GLuint> locations;
    for (auto const& [name, location] : state->getAttributeBindingList())
        EXPECT_TRUE(locations.insert(location).second) << name << " shares location " << location;
    for (std::size_t unit = 1; unit < state->getTexCoordAliasList().size(); ++unit)
        EXPECT_GE(state->getTexCoordAliasList()[unit]._location, 8u);
}

class LastModelMatrixStoreTest : public ::testing::Test
{
protected:
    osg::Matrixf last(osg::Drawable const* drawable, double x, unsigned int frame)
    {
        return mStore.lastModelMatrix(drawable, osg::Matrixd::translate(x, 0.0, 0.0), frame);
    }
    static float x(osg::Matrixf const& matrix) { return matrix.getTrans().x(); }

    CKVLastModelMatrixStore mStore;
    osg::ref_ptr<osg::Geometry> mA = new osg::Geometry;
    osg::ref_ptr<osg::Geometry> mB = new osg::Geometry;
};

TEST_F(LastModelMatrixStoreTest, GivesThePreviousFramesModelOncePerFrameWhateverThePasses)
{
    EXPECT_EQ(x(last(mA.get(), 1.0, 10)), 1.0f) << "first sight: no motion";
    EXPECT_EQ(x(last(mA.get(), 2.0, 11)), 1.0f);
    EXPECT_EQ(x(last(mA.get(), 4.0, 12)), 2.0f);
    // Drawables are independent.
    EXPECT_EQ(x(last(mB.get(), 7.0, 12)), 7.0f);
    EXPECT_EQ(x(last(mB.get(), 8.0, 13)), 7.0f);
    EXPECT_EQ(x(last(mA.get(), 5.0, 13)), 4.0f);
    // Later passes of frame 13 (shadow, main) see the same last model.
    EXPECT_EQ(x(last(mA.get(), 5.0, 13)), 4.0f);
    EXPECT_EQ(x(last(mA.get(), 5.0, 13)), 4.0f);
    EXPECT_EQ(x(last(mA.get(), 6.0, 14)), 5.0f);
}

TEST_F(LastModelMatrixStoreTest, ADrawableMissingAFrameStartsWithoutMotion)
{
    last(mA.get(), 1.0, 1);
    last(mA.get(), 2.0, 2);
    // Culled in frame 3: its frame 2 model says nothing about frame 3.
    EXPECT_EQ(x(last(mA.get(), 9.0, 4)), 9.0f);
    EXPECT_EQ(x(last(mA.get(), 10.0, 5)), 9.0f);
}

TEST_F(LastModelMatrixStoreTest, ForgetsDrawablesNotDrawnLately)
{
    last(mA.get(), 1.0, 1);
    last(mB.get(), 1.0, 1);
    for (unsigned int frame = 2; frame < 3 * CKVLastModelMatrixStore::kSweepInterval; ++frame)
        last(mA.get(), frame, frame);
    EXPECT_EQ(mStore.size(), 1u);
    // Still drawn every frame: still tracked.
    unsigned int const next = 3 * CKVLastModelMatrixStore::kSweepInterval;
    EXPECT_EQ(x(last(mA.get(), next, next)), static_cast<float>(next - 1));
}

} // namespace
} // namespace Kelvor
