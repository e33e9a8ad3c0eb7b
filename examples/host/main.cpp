// A minimal host of the TarnwickOSG backend: it opens an X window, loads the
// backend, sends it a small scene as render commands, picks the middle of
// the window, captures one frame to a file and unloads the backend again.
// Usage: tarnwick-example-host CAPTURE.png
// Exit status 0 when the pick hit the box and the capture was written.
#include "TarnwickCommon/Common.h"
#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVDrawable.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCGetCapture.h"
#include "TarnwickRender/CKVRCInsertSceneNode.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandCache.h"
#include "TarnwickRender/CKVRenderContext.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSelectionResult.h"
#include "TarnwickRender/CKVWindowDataX11.h"
#include "TarnwickStream/CKVGraphicsInterfaceImp.h"

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace Kelvor;

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
// Software rendering of a first frame compiles every shader: allow for it.
constexpr unsigned int kWaitMs = 120000;

// A window with a double-buffered GL visual, mapped before the backend sees it.
Window openWindow(Display* display)
{
    int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8,
                        GLX_DEPTH_SIZE, 24, GLX_STENCIL_SIZE, 8, None};
    XVisualInfo* visual = glXChooseVisual(display, DefaultScreen(display), attributes);
    if (!visual)
        return 0;
    Window const root = RootWindow(display, visual->screen);
    XSetWindowAttributes set{};
    set.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
    set.event_mask = StructureNotifyMask;
    Window window = XCreateWindow(display, root, 0, 0, kWidth, kHeight, 0, visual->depth, InputOutput,
                                  visual->visual, CWColormap | CWEventMask, &set);
    XFree(visual);
    XStoreName(display, window, "TarnwickOSG example host");
    XMapWindow(display, window);
    XEvent event;
    do
        XNextEvent(display, &event);
    while (event.type != MapNotify);
    return window;
}

// A box from (x0, y0, z0) to (x1, y1, z1) as a mesh with one normal per face.
kv_shared_ptr<CKVMesh> box(float x0, float y0, float z0, float x1, float y1, float z1)
{
    float const lo[3] = {x0, y0, z0};
    float const hi[3] = {x1, y1, z1};
    std::vector<CKVVec3<float>> points, normals;
    std::vector<CKVVec3<unsigned int>> triangles;
    for (int axis = 0; axis < 3; ++axis) {
        for (int side = 0; side < 2; ++side) {
            int const u = (axis + 1) % 3, v = (axis + 2) % 3;
            unsigned int const base = static_cast<unsigned int>(points.size());
            float const corners[4][2] = {{lo[u], lo[v]}, {hi[u], lo[v]}, {hi[u], hi[v]}, {lo[u], hi[v]}};
            for (auto const& corner : corners) {
                CKVVec3<float> p{}, n{0.0f, 0.0f, 0.0f};
                (&p.x)[axis] = side ? hi[axis] : lo[axis];
                (&p.x)[u] = corner[0];
                (&p.x)[v] = corner[1];
                (&n.x)[axis] = side ? 1.0f : -1.0f;
                points.push_back(p);
                normals.push_back(n);
            }
            if (side)
                triangles.insert(triangles.end(), {{base, base + 1, base + 2}, {base, base + 2, base + 3}});
            else
                triangles.insert(triangles.end(), {{base, base + 2, base + 1}, {base, base + 3, base + 2}});
        }
    }
    kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
    mesh->setPoint(points.data(), static_cast<unsigned int>(points.size()));
    mesh->setNormal(normals.data(), static_cast<unsigned int>(normals.size()));
    mesh->setTriangle(triangles.data(), static_cast<unsigned int>(triangles.size()));
    return mesh;
}

// A scene node (made by the backend's factory) drawing the shape in one
// colour. Picks answer with the host's drawable of what they hit.
kv_shared_ptr<CKVSceneNode> shapeNode(char const* name, CKVMesh const& shape, CKVDrawable* drawable,
                                      unsigned char r, unsigned char g, unsigned char b)
{
    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
    material->setRGB(r, g, b);
    CKVGraphicsInterfaceImp shapes;
    std::vector<kv_shared_ptr<CKVRenderObject>> objects;
    std::vector<kv_shared_ptr<CKVBasicMaterial>> materials;
    if (!node || !shapes.addGeometry(&shape))
        return {};
    shapes.getRenderObjectArray(objects, materials);
    node->setName(name);
    kv_shared_ptr<CKVSceneNodeState> state(new CKVMaterialState(material.get()));
    node->getStateSet()->addState(state.get());
    CKVProgramParam param;
    material->getProgramParam(param);
    node->setProgramParam(param);
    for (kv_shared_ptr<CKVRenderObject> const& object : objects) {
        std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> parts;
        if (object->isKindOf(CKVBufferGeometry::desc()))
            static_cast<CKVBufferGeometry&>(*object).getLogicBuffers(parts);
        for (kv_shared_ptr<CKVLogicBufferGeometry> const& part : parts)
            part->setDrawable(drawable);
        node->addRenderObject(object.get());
    }
    return node;
}

// What the render thread answers only after it ran the command.
bool submit(CKVRenderContext& context, CKVRenderCommand* command)
{
    return context.getRenderCommandCache()->submitAndWait(command, kWaitMs);
}

// Everything between load and unload. Returns the exit status.
int run(Display* display, Window window, char const* capturePath)
{
    CKVScene scene;
    CKVCamera camera;
    camera.setAspect(double(kWidth) / kHeight);
    camera.setNearFar(0.1, 100.0);
    camera.setLookAt(CKVPoint3D(6, -8, 5), CKVPoint3D(0, 0, 0.5), CKVVector3D(0, 0, 1));
    scene.setCamera(camera);
    scene.setViewportSize(kWidth, kHeight);
    CKVWindowDataX11 windowData(display, window, kWidth, kHeight);
    CKVGraphicsContext graphics(&windowData, &scene);

    CKVRenderContext* context = CKVRenderCallback::createRenderContext(-1);
    if (!context || !context->initialize(&graphics)) {
        std::fprintf(stderr, "the backend could not attach to the window\n");
        CKVRenderCallback::destroyRenderContext(context);
        return 1;
    }

    // A grey ground with a red box on it, sent as render commands.
    kv_shared_ptr<CKVSceneNode> root(CKVRenderCallback::createSceneNode());
    kv_shared_ptr<CKVDrawable> groundElement(new CKVDrawable(1)), boxElement(new CKVDrawable(2));
    kv_shared_ptr<CKVSceneNode> ground =
        shapeNode("ground", *box(-4, -4, -0.2f, 4, 4, 0), groundElement.get(), 150, 150, 150);
    kv_shared_ptr<CKVSceneNode> redBox = shapeNode("red box", *box(-1, -1, 0, 1, 1, 2), boxElement.get(), 200, 40, 30);
    kv_shared_ptr<CKVRenderCommand> commands[] = {
        new CKVRCAttachSceneData(root.get()),
        new CKVRCInsertSceneNode(root.get(), ground.get()),
        new CKVRCInsertSceneNode(root.get(), redBox.get()),
        new CKVRCApplyCamera(camera),
    };
    bool sent = true;
    for (kv_shared_ptr<CKVRenderCommand> const& command : commands)
        sent = submit(*context, command.get()) && sent;

    // The box stands where the camera looks: the middle of the window.
    kv_shared_ptr<CKVRCPickSelectObject> pick(new CKVRCPickSelectObject(CKVPoint3D(kWidth / 2, kHeight / 2, 0)));
    CKVSelectionResult const* hit = submit(*context, pick.get()) ? pick->getSelection() : nullptr;
    CKVSceneNode const* picked = hit ? hit->getSceneNode() : nullptr;
    if (picked)
        std::printf("picked: %s, element %llu\n", picked->getName(), hit->getDrawable()->getId());
    else
        std::printf("picked: nothing\n");

    kv_shared_ptr<CKVRCGetCapture> capture(
        new CKVRCGetCapture(capturePath, CKVVec2<unsigned int>(kWidth, kHeight), camera, false));
    struct stat file;
    bool const captured = submit(*context, capture.get()) && ::stat(capturePath, &file) == 0 && file.st_size > 0;
    std::printf("capture: %s\n", captured ? capturePath : "failed");

    bool const pickedBox = picked == redBox.get() && hit->getDrawable() == boxElement.get();
    // The context goes first; the nodes the backend made and the pick's
    // answer go at the end of this function, before the backend is unloaded.
    context->destroy();
    CKVRenderCallback::destroyRenderContext(context);
    return sent && pickedBox && captured ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CAPTURE.png\n", argv[0]);
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    Window const window = display ? openWindow(display) : 0;
    if (!window) {
        std::fprintf(stderr, "no X display with an OpenGL visual (set DISPLAY)\n");
        return 2;
    }

    // Loading registers the backend's factories with the host libraries;
    // unloading removes them again.
    void* backend = dlopen(TARNWICK_BACKEND, RTLD_NOW | RTLD_LOCAL);
    if (!backend) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    CKVAString resources;
    Common::getResourceDirectory(resources);
    std::printf("resources: %s\n", resources.c_str());
    int const status = run(display, window, argv[1]);
    dlclose(backend);
    std::printf("unloaded: %s\n", kv_shared_ptr<CKVSceneNode>(CKVRenderCallback::createSceneNode()).valid() ? "no" : "yes");

    XDestroyWindow(display, window);
    XCloseDisplay(display);
    return status;
}
