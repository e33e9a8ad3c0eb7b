#include "bench/CKVBenchIdRender.h"

#include <osg/BoundingBox>
#include <osg/Camera>
#include <osg/Geometry>
#include <osg/GraphicsContext>
#include <osg/Image>
#include <osg/Program>
#include <osg/VertexAttribDivisor>
#include <osgViewer/Viewer>

#include <algorithm>

namespace Kelvor {

namespace {

enum Attribute : unsigned int { kPosition = 0, kPlacement = 1 };

// The placement's own transform (a quarter turn about z, then its point)
// and its id as the colour; the id is the running instance number plus the
// first id of the mesh's batch.
char const* const kVertexSource = R"(#version 330
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 placement;
uniform mat4 viewProjection;
uniform uint firstId;
flat out uint id;
void main()
{
    float turn = placement.w * 1.5707963267948966;
    float c = cos(turn), s = sin(turn);
    vec3 p = vec3(c * position.x - s * position.y, s * position.x + c * position.y, position.z) + placement.xyz;
    gl_Position = viewProjection * vec4(p, 1.0);
    id = firstId + uint(gl_InstanceID);
}
)";

char const* const kFragmentSource = R"(#version 330
flat in uint id;
out vec4 colour;
void main()
{
    uvec4 bytes = (uvec4(id) >> uvec4(0u, 8u, 16u, 24u)) & 255u;
    colour = vec4(bytes) / 255.0;
}
)";

osg::Matrixd viewProjectionOf(CKVBenchIdRender::Camera const& camera, int width, int height)
{
    return osg::Matrixd::lookAt(osg::Vec3d(camera.eye[0], camera.eye[1], camera.eye[2]),
                                osg::Vec3d(camera.target[0], camera.target[1], camera.target[2]), osg::Vec3d(0, 0, 1)) *
           osg::Matrixd::perspective(camera.fovDegrees, double(width) / height, camera.zNear, camera.zFar);
}

} // namespace

std::vector<bool> CKVBenchIdRender::largerThan(std::vector<CKVBenchMesh> const& meshes,
                                               std::vector<CKVBenchPlacement> const& placements, Camera const& camera,
                                               int width, int height, double pixels)
{
    std::vector<osg::BoundingBoxd> boxes(meshes.size());
    for (std::size_t m = 0; m < meshes.size(); ++m)
        for (unsigned int v = 0; v < meshes[m].vertexCount(); ++v)
            boxes[m].expandBy(meshes[m].positions[3 * v], meshes[m].positions[3 * v + 1], meshes[m].positions[3 * v + 2]);
    osg::Matrixd const viewProjection = viewProjectionOf(camera, width, height);
    std::vector<bool> large(placements.size(), true);
    for (std::size_t i = 0; i < placements.size(); ++i) {
        CKVBenchPlacement const& p = placements[i];
        osg::Matrixd const toClip = osg::Matrixd::rotate(p.quarterTurns * 1.5707963267948966, osg::Vec3d(0, 0, 1)) *
                                    osg::Matrixd::translate(p.x, p.y, p.z) * viewProjection;
        double low[2] = {1e300, 1e300}, high[2] = {-1e300, -1e300};
        bool behindEye = false;
        for (int c = 0; c < 8; ++c) {
            osg::Vec4d const clip = osg::Vec4d(boxes[p.mesh].corner(c), 1.0) * toClip;
            behindEye = behindEye || clip.w() <= 0.0;
            double const screen[2] = {(clip.x() / clip.w() * 0.5 + 0.5) * width, (clip.y() / clip.w() * 0.5 + 0.5) * height};
            for (int a = 0; a < 2; ++a) {
                low[a] = std::min(low[a], screen[a]);
                high[a] = std::max(high[a], screen[a]);
            }
        }
        large[i] = behindEye || high[0] - low[0] > pixels || high[1] - low[1] > pixels;
    }
    return large;
}

std::vector<bool> CKVBenchIdRender::idsInPicture(unsigned char const* rgba, std::size_t pixels,
                                                 std::size_t placementCount)
{
    std::vector<bool> seen(placementCount, false);
    for (std::size_t i = 0; i < pixels; ++i) {
        unsigned char const* p = rgba + 4 * i;
        std::size_t const id = std::size_t(p[0]) | std::size_t(p[1]) << 8 | std::size_t(p[2]) << 16 |
                               std::size_t(p[3]) << 24;
        if (id > 0 && id <= placementCount)
            seen[id - 1] = true;
    }
    return seen;
}

std::vector<bool> CKVBenchIdRender::visiblePlacements(std::vector<CKVBenchMesh> const& meshes,
                                                      std::vector<CKVBenchPlacement> const& placements,
                                                      Camera const& camera, int width, int height)
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->width = width;
    traits->height = height;
    traits->pbuffer = true;
    traits->doubleBuffer = false;
    traits->depth = 24;
    osg::ref_ptr<osg::GraphicsContext> context = osg::GraphicsContext::createGraphicsContext(traits.get());
    if (!context.valid()) {
        traits->pbuffer = false;
        traits->windowDecoration = false;
        context = osg::GraphicsContext::createGraphicsContext(traits.get());
    }
    if (!context.valid())
        return {};

    // Placements batched by mesh; each batch's ids are consecutive, so that
    // the id of instance k of a batch is its first id + k.
    std::vector<std::vector<std::size_t>> batches(meshes.size());
    for (std::size_t i = 0; i < placements.size(); ++i)
        batches[placements[i].mesh].push_back(i);

    osg::Matrixd const viewProjection = viewProjectionOf(camera, width, height);

    osg::ref_ptr<osg::Group> root = new osg::Group;
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexSource));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentSource));
    osg::StateSet* state = root->getOrCreateStateSet();
    state->setAttribute(program.get());
    state->addUniform(new osg::Uniform("viewProjection", osg::Matrixf(viewProjection)));
    state->setAttribute(new osg::VertexAttribDivisor(kPlacement, 1));
    state->setMode(GL_DEPTH_TEST, osg::StateAttribute::ON);
    state->setMode(GL_CULL_FACE, osg::StateAttribute::OFF);
    state->setMode(GL_BLEND, osg::StateAttribute::OFF);
    std::vector<unsigned int> ids(placements.size());
    unsigned int nextId = 1;
    for (std::size_t m = 0; m < meshes.size(); ++m) {
        if (batches[m].empty())
            continue;
        CKVBenchMesh const& mesh = meshes[m];
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        geometry->setUseDisplayList(false);
        geometry->setUseVertexBufferObjects(true);
        geometry->setCullingActive(false);
        osg::ref_ptr<osg::Vec3Array> positions = new osg::Vec3Array(mesh.vertexCount());
        for (unsigned int v = 0; v < mesh.vertexCount(); ++v)
            (*positions)[v].set(mesh.positions[3 * v], mesh.positions[3 * v + 1], mesh.positions[3 * v + 2]);
        osg::ref_ptr<osg::Vec4Array> where = new osg::Vec4Array;
        for (std::size_t index : batches[m]) {
            CKVBenchPlacement const& p = placements[index];
            where->push_back(osg::Vec4(float(p.x), float(p.y), float(p.z), float(p.quarterTurns)));
            ids[index] = nextId++;
        }
        geometry->setVertexAttribArray(kPosition, positions.get(), osg::Array::BIND_PER_VERTEX);
        geometry->setVertexAttribArray(kPlacement, where.get(), osg::Array::BIND_PER_VERTEX);
        osg::ref_ptr<osg::DrawElementsUInt> triangles =
            new osg::DrawElementsUInt(GL_TRIANGLES, mesh.indices.begin(), mesh.indices.end());
        triangles->setNumInstances(static_cast<int>(batches[m].size()));
        geometry->addPrimitiveSet(triangles.get());
        geometry->getOrCreateStateSet()->addUniform(new osg::Uniform("firstId", ids[batches[m].front()]));
        root->addChild(geometry.get());
    }

    osg::ref_ptr<osg::Image> picture = new osg::Image;
    picture->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer;
    viewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    osg::Camera* view = viewer->getCamera();
    view->setGraphicsContext(context.get());
    view->setViewport(0, 0, width, height);
    view->setClearColor(osg::Vec4(0, 0, 0, 0));
    view->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    view->setCullingMode(osg::CullSettings::NO_CULLING);
    view->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    view->attach(osg::Camera::DEPTH_BUFFER, GL_DEPTH_COMPONENT24);
    view->attach(osg::Camera::COLOR_BUFFER, picture.get());
    viewer->setSceneData(root.get());
    viewer->realize();
    viewer->frame();
    viewer->setSceneData(nullptr);
    viewer = nullptr;

    // Ids back to placement order.
    std::vector<bool> const seenIds =
        idsInPicture(picture->data(), std::size_t(width) * height, placements.size());
    std::vector<bool> visible(placements.size(), false);
    for (std::size_t i = 0; i < placements.size(); ++i)
        visible[i] = seenIds[ids[i] - 1];
    return visible;
}

} // namespace Kelvor
