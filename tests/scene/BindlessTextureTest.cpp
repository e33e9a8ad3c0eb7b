#include "scene/CKVOSGBindlessTexture.h"
#include "scene/KVBindlessHandleUniform.h"

#include <gtest/gtest.h>

#include <osg/BlendFunc>
#include <osg/State>
#include <osg/StateSet>
#include <osg/Texture2D>

namespace Kelvor {
namespace {

osg::ref_ptr<KVBindlessHandleUniform> handleUniform(char const* name)
{
    return new KVBindlessHandleUniform(name, 0, true);
}

TEST(BindlessTexture, AddingUnderANameOrBlockInUseReplacesTheEntry)
{
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    EXPECT_FALSE(attribute->isDirty());

    osg::ref_ptr<osg::Texture2D> first = new osg::Texture2D;
    osg::ref_ptr<osg::Texture2D> second = new osg::Texture2D;
    osg::ref_ptr<osg::Texture2D> other = new osg::Texture2D;
    attribute->addTexture({first, handleUniform("Albedo_Tx")});
    EXPECT_TRUE(attribute->isDirty());
    attribute->addTexture({other, handleUniform("s_repNoise")});
    // A new uniform object of the same name: the key is the name.
    osg::ref_ptr<KVBindlessHandleUniform> replacement = handleUniform("Albedo_Tx");
    attribute->addTexture({second, replacement});

    ASSERT_EQ(attribute->getTextures().size(), 2u);
    CKVOSGBindlessTexture::TextureEntry const& albedo = attribute->getTextures().at("Albedo_Tx");
    EXPECT_EQ(albedo.texture.get(), second.get());
    EXPECT_EQ(albedo.uniform.get(), replacement.get());
    EXPECT_EQ(attribute->getTextures().at("s_repNoise").texture.get(), other.get());

    CKVOSGBindlessTexture::TextureArrayEntry block;
    block.blockIndex = 3;
    block.textures = {first, second};
    block.handles = new osg::UInt64Array(2);
    attribute->addTextureArray(block);
    CKVOSGBindlessTexture::TextureArrayEntry sameBlock = block;
    sameBlock.textures = {other};
    sameBlock.handles = new osg::UInt64Array(1);
    attribute->addTextureArray(sameBlock);
    block.blockIndex = 4;
    attribute->addTextureArray(block);

    ASSERT_EQ(attribute->getTextureArrays().size(), 2u);
    EXPECT_EQ(attribute->getTextureArrays().at(3).textures.size(), 1u);
    EXPECT_EQ(attribute->getTextureArrays().at(3).handles.get(), sameBlock.handles.get());
    EXPECT_EQ(attribute->getTextureArrays().at(4).textures.size(), 2u);
}

TEST(BindlessTexture, StateSetHoldsOneAttributeInASlotOfItsOwn)
{
    EXPECT_FALSE(getOrCreateBindlessTexture(nullptr).valid());

    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setAttribute(new osg::BlendFunc);
    osg::ref_ptr<CKVOSGBindlessTexture> made = getOrCreateBindlessTexture(stateSet.get());
    ASSERT_TRUE(made.valid());
    EXPECT_EQ(getOrCreateBindlessTexture(stateSet.get()).get(), made.get());
    EXPECT_EQ(stateSet->getAttributeList().size(), 2u) << "the blend function must keep its place";
    EXPECT_EQ(stateSet->getAttribute(static_cast<osg::StateAttribute::Type>(100)), made.get());
    // Its number is taken by no attribute of OpenSceneGraph's own.
    EXPECT_GT(static_cast<int>(made->getType()), static_cast<int>(osg::StateAttribute::FRAME_BUFFER_OBJECT));
}

TEST(BindlessTexture, DistinctAttributesSortTogetherButApartFromOtherClasses)
{
    osg::ref_ptr<CKVOSGBindlessTexture> a = new CKVOSGBindlessTexture;
    osg::ref_ptr<CKVOSGBindlessTexture> b = new CKVOSGBindlessTexture;
    b->addTexture({new osg::Texture2D, handleUniform("Albedo_Tx")});
    EXPECT_EQ(a->compare(*a), 0);
    EXPECT_EQ(a->compare(*b), 0);
    EXPECT_EQ(b->compare(*a), 0);

    osg::ref_ptr<osg::BlendFunc> blend = new osg::BlendFunc;
    int const forward = a->compare(*blend);
    EXPECT_NE(forward, 0);
    // Opposite answers both ways, or state sorting is not a strict order.
    EXPECT_EQ(blend->compare(*a) < 0, forward > 0);
}

TEST(BindlessTexture, OnlyAReleaseWithAStateMakesTheHandlesAgain)
{
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    attribute->releaseGLObjects(nullptr);
    EXPECT_FALSE(attribute->isDirty());
    osg::ref_ptr<osg::State> state = new osg::State;
    attribute->releaseGLObjects(state.get());
    EXPECT_TRUE(attribute->isDirty());
}

TEST(BindlessTexture, HandleUniformKeepsTheFullWidthAndSortsByHandle)
{
    unsigned long long const handle = 0xFEDCBA9876543210ull;
    osg::ref_ptr<KVBindlessHandleUniform> uniform = handleUniform("Albedo_Tx");
    EXPECT_EQ(uniform->getName(), "Albedo_Tx");
    unsigned int const before = uniform->getModifiedCount();
    EXPECT_TRUE(uniform->set(handle, true));
    EXPECT_NE(uniform->getModifiedCount(), before) << "a new handle must reach the programs";
    unsigned long long read = 0;
    EXPECT_TRUE(uniform->get(read));
    EXPECT_EQ(read, handle);

    osg::ref_ptr<KVBindlessHandleUniform> same = new KVBindlessHandleUniform("Albedo_Tx", handle, true);
    osg::ref_ptr<KVBindlessHandleUniform> lower = new KVBindlessHandleUniform("Albedo_Tx", handle - 1, true);
    EXPECT_EQ(uniform->compare(*same), 0);
    EXPECT_GT(uniform->compare(*lower), 0);
    EXPECT_LT(lower->compare(*uniform), 0);

    osg::ref_ptr<KVBindlessHandleUniform> copy =
        static_cast<KVBindlessHandleUniform*>(uniform->clone(osg::CopyOp::DEEP_COPY_ALL));
    EXPECT_EQ(copy->getHandle(), handle);
    EXPECT_EQ(copy->getName(), "Albedo_Tx");
}

} // namespace
} // namespace Kelvor
