#include "bench/CKVCulledInstanceCounter.h"

#include "binding/CKVRenderContextX11Imp.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"
#include "viewer/CKVOSGCamera.h"

#include <osg/GLExtensions>
#include <osg/GraphicsContext>
#include <osg/PrimitiveSetIndirect>

namespace Kelvor {

namespace {

// Byte offset of instanceCount in a glMultiDrawElementsIndirect command.
constexpr GLintptr kInstanceCountOffset = 4;

} // namespace

double CKVCulledInstanceCounter::count(CKVRenderContextX11Imp& context,
                                       std::vector<kv_shared_ptr<CKVBufferGeometry>> const& geometries)
{
    osg::GraphicsContext* window = context.getMainCamera()->getGraphicsContext();
    if (!window || !window->makeCurrent())
        return -1.0;
    osg::State& state = *window->getState();
    using GetNamed = void(GL_APIENTRY*)(GLuint, GLintptr, GLsizeiptr, void*);
    auto const get = reinterpret_cast<GetNamed>(osg::getGLExtensionFuncPtr("glGetNamedBufferSubData"));
    double total = 0.0;
    for (auto const& host : geometries) {
        if (!get || !host.valid() || !host->isKindOf(CKVBufferGeometryImp::desc()))
            continue;
        CKVOSGGeometry* geometry = static_cast<CKVBufferGeometryImp*>(host.get())->getOSGGeometry();
        auto const* primitives =
            geometry->getNumPrimitiveSets() ? dynamic_cast<osg::DrawElementsIndirect*>(geometry->getPrimitiveSet(0)) : nullptr;
        osg::IndirectCommandDrawElements const* commands = primitives ? primitives->getIndirectCommandArray() : nullptr;
        osg::GLBufferObject* buffer =
            commands && commands->getBufferObject() ? commands->getBufferObject()->getGLBufferObject(state.getContextID()) : nullptr;
        if (!buffer)
            continue;
        GLuint instances = 0;
        get(buffer->getGLObjectID(), static_cast<GLintptr>(buffer->getOffset(commands->getBufferIndex())) + kInstanceCountOffset,
            sizeof(instances), &instances);
        total += instances;
    }
    window->releaseContext();
    return total;
}

} // namespace Kelvor
