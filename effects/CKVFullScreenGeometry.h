#pragma once

#include "environment/CBGGeometry.h"

#include <osg/GL>
#include <osg/Texture2D>
#include <osg/ref_ptr>

#include <string>
#include <vector>

namespace osg {
class GLExtensions;
class State;
} // namespace osg

namespace Kelvor {

// The drawable of a full-screen effect. It does its work in direct GL inside
// drawImplementation: OSG only decides when it runs (through the effect's
// pre-render camera). The frame goes:
//   - nothing at all until the input has a texture object, so the first
//     frame after the effect is made, or after its input changed, draws
//     nothing rather than reading an empty texture;
//   - createGLObjects once (framebuffers, programs);
//   - attachTargets after a resize or a new input;
//   - drawSteps, each step one glDrawArrays of three vertices;
//   - framebuffer 0 again.
// A derived effect registers the textures it renders into with addTarget, so
// that resize follows through all of them.
class CKVFullScreenGeometry : public CBGGeometry
{
public:
    CKVFullScreenGeometry();

    char const* className() const override { return "CKVFullScreenGeometry"; }

    void setInput(osg::Texture2D* texture);
    osg::Texture2D* getInput() const { return mInput.get(); }
    // The texture the next effect (or the final pass) reads.
    virtual osg::Texture2D* getOutput() const = 0;

    // Gives every registered target the size, and has them attached again
    // at the next draw. A zero size is ignored.
    virtual void resize(int width, int height);
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

    void drawImplementation(osg::RenderInfo& renderInfo) const final;
    // Frees the effect's own GL objects and its targets' (the context must
    // be current); the next draw makes them again.
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // "#version 420 core" and the vertex stage of the screen triangle, with
    // texture coordinates out as `texCord`.
    static std::string triangleVertexSource();

protected:
    ~CKVFullScreenGeometry() override;

    void addTarget(osg::Texture2D* texture);

    // False when something could not be made; the draw is then skipped and
    // creation is tried again next frame.
    virtual bool createGLObjects(osg::State& state) const = 0;
    virtual void attachTargets(osg::State& state) const = 0;
    virtual void drawSteps(osg::State& state) const = 0;
    // Deletes what createGLObjects made.
    virtual void deleteGLObjects(osg::State& state) const { (void)state; }

    // Helpers for derived effects. They keep OSG's record of the GL state
    // honest, so the drawables after this one are applied correctly.
    // A linked program from two sources, or 0 (the log goes to OSG's
    // notification).
    static GLuint buildProgram(osg::GLExtensions& gl, std::string const& vertex, std::string const& fragment);
    static void useProgram(osg::State& state, GLuint program);
    // Applies `texture` (creating its object if needed) on `unit`.
    static void bindTexture(osg::State& state, unsigned int unit, osg::Texture* texture);
    // Attaches level 0 of `texture` at `attachment` of the bound framebuffer.
    static void attachTexture(osg::State& state, GLenum attachment, osg::Texture* texture);
    static void drawTriangle();
    // The near and far planes of the projection the scene was drawn with
    // (perspective, else orthographic); false when it is neither.
    static bool depthRange(osg::State const& state, double& zNear, double& zFar);
    // A program of the screen triangle and the built-in fragment text
    // `name`, behind `header` (version and defines); 0 on failure.
    static GLuint buildFragmentProgram(osg::GLExtensions& gl, char const* header, char const* name);

private:
    osg::ref_ptr<osg::Texture2D> mInput;
    std::vector<osg::ref_ptr<osg::Texture2D>> mTargets;
    int mWidth = 1;
    int mHeight = 1;
    // Drawing is const in OSG; these record what the GL side has seen.
    mutable bool mCreated = false;
    mutable bool mTexturesChanged = true;
};

} // namespace Kelvor
