#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/KVBindlessHandleUniform.h"
#include "support/GLTest.h"

#include <gtest/gtest.h>

#include <osg/GLExtensions>
#include <osg/Image>
#include <osg/Program>
#include <osg/State>
#include <osg/StateSet>
#include <osg/Texture2D>

#include <map>
#include <vector>

namespace Kelvor {
namespace {

osg::ref_ptr<osg::Texture2D> imageTexture(unsigned char grey)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    std::fill(image->data(), image->data() + image->getTotalSizeInBytes(), grey);
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image.get());
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    return texture;
}

unsigned long long handleOf(osg::Uniform const* uniform)
{
    unsigned long long value = 0;
    static_cast<KVBindlessHandleUniform const*>(uniform)->get(value);
    return value;
}

// Hands out handles made from the texture id, and counts the calls.
class CountingMaker : public KVBindlessHandleMaker
{
public:
    static GLuint64 handleFor(GLuint id) { return 0xABC000000000ull + id; }

    bool isAvailable(osg::State&) const override { return true; }
    GLuint64 getTextureHandle(osg::State&, GLuint textureId) const override
    {
        ++handlesMade;
        return handleFor(textureId);
    }
    void makeTextureHandleResident(osg::State&, GLuint64 handle) const override { resident.push_back(handle); }

    mutable int handlesMade = 0;
    mutable std::vector<GLuint64> resident;
};

// Stand-ins for the driver's bindless entry points, which this driver lacks.
struct DriverCalls
{
    int getHandle = 0;
    int makeResident = 0;
    std::map<GLint, GLuint64> uniforms;
};
DriverCalls gCalls;

GLuint64 GL_APIENTRY fakeGetTextureHandle(GLuint id)
{
    ++gCalls.getHandle;
    return CountingMaker::handleFor(id);
}
void GL_APIENTRY fakeMakeResident(GLuint64)
{
    ++gCalls.makeResident;
}
void GL_APIENTRY fakeUniformHandle(GLint location, GLuint64 handle)
{
    gCalls.uniforms[location] = handle;
}

// Puts the stand-ins into the context's extension table for one test.
class FakeBindlessEntryPoints
{
public:
    explicit FakeBindlessEntryPoints(osg::State& state)
        : mExt(state.get<osg::GLExtensions>())
        , mGet(mExt->glGetTextureHandle)
        , mResident(mExt->glMakeTextureHandleResident)
        , mUniform(mExt->glUniformHandleui64)
    {
        gCalls = DriverCalls();
        mExt->glGetTextureHandle = &fakeGetTextureHandle;
        mExt->glMakeTextureHandleResident = &fakeMakeResident;
        mExt->glUniformHandleui64 = &fakeUniformHandle;
    }
    ~FakeBindlessEntryPoints()
    {
        mExt->glGetTextureHandle = mGet;
        mExt->glMakeTextureHandleResident = mResident;
        mExt->glUniformHandleui64 = mUniform;
    }

private:
    osg::GLExtensions* mExt;
    decltype(osg::GLExtensions::glGetTextureHandle) mGet;
    decltype(osg::GLExtensions::glMakeTextureHandleResident) mResident;
    decltype(osg::GLExtensions::glUniformHandleui64) mUniform;
};

class BindlessTextureGLTest : public GLTest
{
protected:
    void TearDown() override
    {
        CKVRenderStateManager::instance().setBindlessTexture(mBindlessBefore);
        GLTest::TearDown();
    }

    bool mBindlessBefore = CKVRenderStateManager::instance().isBindlessTexture();
};

TEST_F(BindlessTextureGLTest, WithoutDriverSupportNothingIsAskedOfTheDriver)
{
    CKVRenderStateManager::instance().setBindlessTexture(false);
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    osg::ref_ptr<KVBindlessHandleUniform> uniform = new KVBindlessHandleUniform("Albedo_Tx", 0, true);
    attribute->addTexture({imageTexture(200), uniform});

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        FakeBindlessEntryPoints fake(state);
        attribute->apply(state);
        EXPECT_EQ(gCalls.getHandle + gCalls.makeResident, 0);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        attribute->releaseGLObjects(&state);
    }));
    EXPECT_EQ(handleOf(uniform.get()), 0u);
}

TEST_F(BindlessTextureGLTest, HandlesAreMadeOnceUntilTheContextsObjectsAreReleased)
{
    osg::ref_ptr<CountingMaker> maker = new CountingMaker;
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    attribute->setHandleMaker(maker.get());
    osg::ref_ptr<osg::Texture2D> albedo = imageTexture(200);
    osg::ref_ptr<KVBindlessHandleUniform> albedoHandle = new KVBindlessHandleUniform("Albedo_Tx", 0, true);
    attribute->addTexture({albedo, albedoHandle});
    // Without an image there is no texture object, hence no handle.
    osg::ref_ptr<KVBindlessHandleUniform> emptyHandle = new KVBindlessHandleUniform("Empty_Tx", 0, true);
    attribute->addTexture({new osg::Texture2D, emptyHandle});

    GLuint albedoId = 0;
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        attribute->apply(state);
        attribute->apply(state);
        ASSERT_NE(albedo->getTextureObject(state.getContextID()), nullptr);
        albedoId = albedo->getTextureObject(state.getContextID())->id();
        EXPECT_EQ(maker->handlesMade, 1);
        ASSERT_EQ(maker->resident.size(), 1u);
        EXPECT_EQ(maker->resident[0], CountingMaker::handleFor(albedoId));

        attribute->releaseGLObjects(&state);
        attribute->apply(state);
        EXPECT_EQ(maker->handlesMade, 2);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        albedo->releaseGLObjects(&state);
    }));
    EXPECT_EQ(handleOf(albedoHandle.get()), CountingMaker::handleFor(albedoId));
    EXPECT_EQ(handleOf(emptyHandle.get()), 0u);
    EXPECT_FALSE(attribute->isDirty()) << "a texture without an object is not retried on its own";
}

TEST_F(BindlessTextureGLTest, ArrayEntriesFillTheirElementsAndMarkTheBlockForUpload)
{
    osg::ref_ptr<CountingMaker> maker = new CountingMaker;
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = new CKVOSGBindlessTexture;
    attribute->setHandleMaker(maker.get());
    CKVOSGBindlessTexture::TextureArrayEntry block;
    block.blockIndex = 3;
    osg::ref_ptr<osg::Texture2D> first = imageTexture(10);
    osg::ref_ptr<osg::Texture2D> third = imageTexture(30);
    block.textures = {first, new osg::Texture2D, third};
    block.handles = new osg::UInt64Array(3);
    (*block.handles)[1] = 77;
    attribute->addTextureArray(block);
    unsigned int const uploadsBefore = block.handles->getModifiedCount();

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        attribute->apply(state);
        unsigned int const id = state.getContextID();
        EXPECT_EQ((*block.handles)[0], CountingMaker::handleFor(first->getTextureObject(id)->id()));
        EXPECT_EQ((*block.handles)[1], 77u) << "an element without a texture object is left as it was";
        EXPECT_EQ((*block.handles)[2], CountingMaker::handleFor(third->getTextureObject(id)->id()));
        first->releaseGLObjects(&state);
        third->releaseGLObjects(&state);
    }));
    EXPECT_NE(block.handles->getModifiedCount(), uploadsBefore);
}

TEST_F(BindlessTextureGLTest, MakingHandlesLeavesTheStateSetsTextureBound)
{
    osg::ref_ptr<CountingMaker> maker = new CountingMaker;
    osg::ref_ptr<osg::Texture2D> bound = imageTexture(90);
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setTextureAttribute(0, bound.get());
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = getOrCreateBindlessTexture(stateSet.get());
    attribute->setHandleMaker(maker.get());
    osg::ref_ptr<osg::Texture2D> other = imageTexture(20);
    attribute->addTexture({other, new KVBindlessHandleUniform("Albedo_Tx", 0, true)});

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        state.setActiveTextureUnit(0);
        state.apply(stateSet.get());
        EXPECT_EQ(maker->handlesMade, 1);
        GLint binding = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &binding);
        EXPECT_EQ(static_cast<GLuint>(binding), bound->getTextureObject(state.getContextID())->id());
        state.apply();
        bound->releaseGLObjects(&state);
        other->releaseGLObjects(&state);
    }));
}

// The stock uniform path would send a 64-bit value with glUniform1ui64v,
// which drivers refuse for samplers; the handle must come through
// glUniformHandleui64, and only to a program that has the uniform. An
// enclosing state set's attribute (the root's, holding the noise texture) is
// hidden by the drawn state set's own, yet its handles must be made too.
TEST_F(BindlessTextureGLTest, HandlesOfEveryEnclosingStateSetReachTheProgramThroughTheHandleCall)
{
    CKVRenderStateManager::instance().setBindlessTexture(true);
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, "#version 330\nvoid main() { gl_Position = vec4(0.0); }\n"));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT,
                                       "#version 330\nuniform sampler2D Albedo_Tx;\nuniform sampler2D s_repNoise;\n"
                                       "out vec4 colour;\n"
                                       "void main() { colour = texture(Albedo_Tx, vec2(0.5)) + "
                                       "texture(s_repNoise, vec2(0.5)); }\n"));
    osg::ref_ptr<osg::Texture2D> noise = imageTexture(30);
    osg::ref_ptr<osg::StateSet> root = new osg::StateSet;
    osg::ref_ptr<KVBindlessHandleUniform> noiseHandle = new KVBindlessHandleUniform("s_repNoise", 0, true);
    root->addUniform(noiseHandle.get());
    getOrCreateBindlessTexture(root.get())->addTexture({noise, noiseHandle});

    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setAttributeAndModes(program.get());
    osg::ref_ptr<KVBindlessHandleUniform> albedoHandle = new KVBindlessHandleUniform("Albedo_Tx", 0, true);
    osg::ref_ptr<KVBindlessHandleUniform> unused = new KVBindlessHandleUniform("Unused_Tx", 0, true);
    stateSet->addUniform(albedoHandle.get());
    stateSet->addUniform(unused.get());
    osg::ref_ptr<osg::Texture2D> albedo = imageTexture(120);
    osg::ref_ptr<osg::Texture2D> other = imageTexture(60);
    osg::ref_ptr<CKVOSGBindlessTexture> attribute = getOrCreateBindlessTexture(stateSet.get());
    attribute->addTexture({albedo, albedoHandle});
    attribute->addTexture({other, unused});

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        FakeBindlessEntryPoints fake(state);
        // As a render leaf draws: the enclosing state sets pushed, its own
        // applied.
        state.pushStateSet(root.get());
        state.apply(stateSet.get());
        EXPECT_EQ(gCalls.getHandle, 3);
        EXPECT_EQ(gCalls.makeResident, 3);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "the stock path sent something";

        KVBindlessHandleUniform::applyCurrent(state, stateSet.get());
        osg::Program::PerContextProgram const* pcp = state.getLastAppliedProgramObject();
        ASSERT_NE(pcp, nullptr);
        GLint const albedoLocation = pcp->getUniformLocation(std::string("Albedo_Tx"));
        GLint const noiseLocation = pcp->getUniformLocation(std::string("s_repNoise"));
        ASSERT_GE(albedoLocation, 0);
        ASSERT_GE(noiseLocation, 0);
        unsigned int const id = state.getContextID();
        EXPECT_EQ(gCalls.uniforms.size(), 2u) << "only the program's own uniforms are sent";
        EXPECT_EQ(gCalls.uniforms[albedoLocation], CountingMaker::handleFor(albedo->getTextureObject(id)->id()));
        EXPECT_EQ(gCalls.uniforms[noiseLocation], CountingMaker::handleFor(noise->getTextureObject(id)->id()));
        state.popStateSet();
        state.apply();
        program->releaseGLObjects(&state);
        for (osg::Texture2D* texture : {albedo.get(), other.get(), noise.get()})
            texture->releaseGLObjects(&state);
    }));
}

} // namespace
} // namespace Kelvor
