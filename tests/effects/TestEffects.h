#pragma once

// Small effects built only for the tests, one on each generator base, so
// that the bases are exercised the way the real effects will use them.

#include "effects/CKVFullScreenGenerator.h"
#include "effects/CKVFullScreenGeometry.h"
#include "effects/CKVSceneGenerator.h"

#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include <osg/GLExtensions>
#include <osg/State>

#include <string>

namespace Kelvor {
namespace TestEffects {

// Full-screen effect: the input, inverted, into an RGB8 texture of its own.
class InvertGeometry : public CKVFullScreenGeometry
{
public:
    InvertGeometry()
        : mOutput(new osg::Texture2D)
    {
        mOutput->setInternalFormat(GL_RGB8);
        mOutput->setSourceFormat(GL_RGB);
        mOutput->setSourceType(GL_UNSIGNED_BYTE);
        mOutput->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
        mOutput->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
        addTarget(mOutput.get());
    }

    char const* className() const override { return "InvertGeometry"; }
    osg::Texture2D* getOutput() const override { return mOutput.get(); }

    mutable int mDraws = 0;

protected:
    bool createGLObjects(osg::State& state) const override
    {
        osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
        mProgram = buildProgram(gl, triangleVertexSource(),
                                "#version 420 core\n"
                                "in vec2 texCord;\n"
                                "out vec4 colour;\n"
                                "layout(binding = 0) uniform sampler2D inputMap;\n"
                                "void main() { colour = vec4(1.0 - texture(inputMap, texCord).rgb, 1.0); }\n");
        if (mProgram == 0)
            return false;
        gl.glGenFramebuffers(1, &mFramebuffer);
        return true;
    }

    void attachTargets(osg::State& state) const override
    {
        state.get<osg::GLExtensions>()->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffer);
        attachTexture(state, GL_COLOR_ATTACHMENT0_EXT, mOutput.get());
    }

    void drawSteps(osg::State& state) const override
    {
        state.get<osg::GLExtensions>()->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffer);
        glViewport(0, 0, getWidth(), getHeight());
        useProgram(state, mProgram);
        bindTexture(state, 0, getInput());
        drawTriangle();
        ++mDraws;
    }

    void deleteGLObjects(osg::State& state) const override
    {
        osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
        gl.glDeleteProgram(mProgram);
        gl.glDeleteFramebuffers(1, &mFramebuffer);
        mProgram = 0;
        mFramebuffer = 0;
    }

private:
    osg::ref_ptr<osg::Texture2D> mOutput;
    mutable GLuint mProgram = 0;
    mutable GLuint mFramebuffer = 0;
};

class InvertGenerator : public CKVFullScreenGenerator
{
public:
    InvertGenerator(int width, int height, int orderNum)
        : CKVFullScreenGenerator(new InvertGeometry, width, height, orderNum, GL_COLOR_BUFFER_BIT)
    {
    }
    InvertGeometry* invert() const { return static_cast<InvertGeometry*>(getGeometry()); }
};

// Scene pass effect: one pass over a subject, taking only host nodes with
// render option 2 and pushing variant 0 for nodes named "variant".
class OptionPassGenerator : public CKVSceneGenerator
{
public:
    explicit OptionPassGenerator(osg::Node* subject)
        : mPass(new PassData(*this, subject, 1))
    {
        mPass->getCamera()->setName("OptionPassCamera");
        mPass->getCamera()->setRenderOrder(osg::Camera::PRE_RENDER, 7);
        mPass->getVariant(0)->setName("variant");
        addPass(mPass.get());
    }

    char const* className() const override { return "OptionPassGenerator"; }
    PassData* pass() const { return mPass.get(); }

    bool mEnabled = true;
    int mFrames = 0;

protected:
    bool isEffectEnabled() const override { return mEnabled; }
    void updateFrame(osgUtil::CullVisitor&) override { ++mFrames; }
    bool acceptsSceneNode(CKVSceneNode const& node, PassData const&) const override
    {
        auto const* option = static_cast<CKVRenderOptionState const*>(
            node.getStateSet()->getState(CKVSceneNodeState::kRenderOption));
        return option && option->hasRenderOption(CKVRenderOptionState::kAmbientOcclusion);
    }
    osg::StateSet* variantFor(CKVSceneNode const& node, PassData& pass) const override
    {
        return std::string(node.getName()) == "variant" ? pass.getVariant(0) : nullptr;
    }

private:
    osg::ref_ptr<PassData> mPass;
};

} // namespace TestEffects
} // namespace Kelvor
