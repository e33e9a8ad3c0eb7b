#include "scene/KVBindlessHandleMaker.h"

#include "programs/CKVRenderStateManager.h"

#include <osg/GLExtensions>
#include <osg/State>
#include <osg/ref_ptr>

namespace Kelvor {

namespace {

class DriverHandleMaker : public KVBindlessHandleMaker
{
public:
    bool isAvailable(osg::State& state) const override
    {
        // The driver check comes first: some drivers resolve these entry
        // points without offering bindless textures.
        if (!CKVRenderStateManager::instance().isBindlessTexture())
            return false;
        osg::GLExtensions const* ext = state.get<osg::GLExtensions>();
        return ext && ext->glGetTextureHandle && ext->glMakeTextureHandleResident;
    }

    GLuint64 getTextureHandle(osg::State& state, GLuint textureId) const override
    {
        return state.get<osg::GLExtensions>()->glGetTextureHandle(textureId);
    }

    void makeTextureHandleResident(osg::State& state, GLuint64 handle) const override
    {
        state.get<osg::GLExtensions>()->glMakeTextureHandleResident(handle);
    }
};

} // namespace

KVBindlessHandleMaker* KVBindlessHandleMaker::getDriverMaker()
{
    static osg::ref_ptr<KVBindlessHandleMaker> const maker = new DriverHandleMaker;
    return maker.get();
}

} // namespace Kelvor
