#include "apps/view/ViewApplication.h"

#include "apps/view/ViewCameraFraming.h"
#include "apps/view/ViewCaptureTarget.h"
#include "apps/view/ViewContent.h"
#include "apps/view/ViewInput.h"
#include "apps/view/ViewKeyBindings.h"
#include "apps/view/ViewModelLoader.h"
#include "apps/view/ViewOptionParser.h"
#include "apps/view/ViewOrbitOperator.h"
#include "apps/view/ViewPickReporter.h"
#include "apps/view/ViewProgressPrinter.h"
#include "apps/view/ViewRenderSettings.h"
#include "apps/view/ViewSession.h"
#include "apps/view/ViewWindow.h"
#include "apps/view/ViewXServer.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace Kelvor {

namespace {

#ifdef TARNWICK_VERSION
char const* const kVersion = TARNWICK_VERSION;
#else
char const* const kVersion = "(unversioned build)";
#endif

// The main loop polls X and the pick answers; 10 ms keeps input smooth next
// to the 20 ms frame tick and costs nothing measurable.
constexpr auto kPollInterval = std::chrono::milliseconds(10);

// Ctrl+C and a polite kill end the window loop, so that the ordered
// teardown still runs.
std::atomic<bool> gInterrupted{false};

void onInterrupt(int)
{
    gInterrupted.store(true);
}

CKVCamera startCamera(ViewOptions const& options, ViewContent const& content, int width, int height)
{
    CKVCamera camera;
    double const aspect = double(width) / height;
    double const radius = content.box.valid() ? 0.5 * content.box.diagonal().length() : 10.0;
    if (options.hasCamera) {
        ViewCameraFraming::lookAt(CKVPoint3D(options.eye[0], options.eye[1], options.eye[2]),
                                  CKVPoint3D(options.target[0], options.target[1], options.target[2]), aspect, radius,
                                  camera);
    } else {
        ViewCameraFraming::frame(content.box, options.viewName, aspect, camera);
    }
    return camera;
}

} // namespace

int ViewApplication::fail(std::string const& message, int code)
{
    std::fprintf(stderr, "tarnwick-view: %s\n", message.c_str());
    return code;
}

int ViewApplication::run(std::vector<std::string> const& arguments)
{
    ViewOptions options;
    ViewOptionParser parser;
    if (!parser.parse(arguments, options))
        return fail(parser.getError() + " (see --help)", kUsage);
    if (options.help) {
        std::fputs(ViewOptionParser::usage().c_str(), stdout);
        return kOk;
    }
    if (options.version) {
        std::printf("tarnwick-view %s\n", kVersion);
        return kOk;
    }
    std::string error;
    if (!options.capturePath.empty() && !ViewCaptureTarget::check(options.capturePath, error))
        return fail(error);
    // A window needs a display: say so before a long load, but after a
    // wrong file name, which is the more useful message.
    if (options.capturePath.empty() && !ViewXServer::userDisplayAvailable()) {
        if (!options.modelPath.empty() && !ViewModelLoader::checkReadable(options.modelPath, error))
            return fail(error);
        return fail("no X display to show a window on; add --capture FILE to render an image without one");
    }
    ViewContent content;
    {
        ViewModelLoader loader;
        if (options.builtIn)
            loader.setDefaultModelPath(std::string());
        ViewProgressPrinter progress(stdout);
        loader.setProgressCallback([&progress](double fraction, char const* phase) { progress.update(fraction, phase); });
        bool const loaded = loader.load(options.modelPath, content);
        progress.finish();
        if (!loaded)
            return fail(loader.getError());
    }
    std::printf("%s\n", ViewModelLoader::summary(content).c_str());
    std::fflush(stdout);
    for (std::string const& notice : content.notices)
        std::fprintf(stderr, "tarnwick-view: warning: %s\n", notice.c_str());

    int const status = runSession(options, content);
    // The host content goes after the context, whose destruction released
    // the GL objects behind it.
    content = ViewContent();
    return status;
}

int ViewApplication::runSession(ViewOptions const& options, ViewContent& content)
{
    std::string error;
    ViewXServer server;
    if (!server.open(!options.capturePath.empty(), error))
        return fail(error);
    ViewWindow window(server.getDisplay());
    std::string const title =
        "tarnwick-view - " + (options.modelPath.empty() ? content.kind : options.modelPath);
    if (!window.create(options.width, options.height, title, error))
        return fail(error);

    ViewRenderSettings settings(options);
    CKVCamera const camera = startCamera(options, content, options.width, options.height);
    ViewSession session;
    if (!session.start(window.getWindowData(), content, camera, settings.getConfig(), error))
        return fail(error);

    int status = kOk;
    if (!options.capturePath.empty()) {
        if (session.capture(options.capturePath, options.width, options.height, camera, error))
            std::printf("wrote %s (%dx%d)\n", options.capturePath.c_str(), options.width, options.height);
        else
            status = fail(error);
    } else {
        status = interact(options, content, session, window);
    }
    session.stop();
    window.destroy();
    server.close();
    return status;
}

int ViewApplication::interact(ViewOptions const& options, ViewContent const& content, ViewSession& session,
                              ViewWindow& window)
{
    ViewRenderSettings settings(options);
    ViewKeyBindings keys(settings);
    bool quit = false;
    session.setKeyHandler([&](CKVEvent const& event) {
        ViewKeyBindings::Result const result = keys.handle(event);
        switch (result.action) {
        case ViewKeyBindings::Action::kApplyConfig:
            session.applyRenderConfig(settings.getConfig());
            break;
        case ViewKeyBindings::Action::kResetView: {
            CKVCamera const camera = startCamera(options, content, window.getWidth(), window.getHeight());
            session.getScene().setCamera(camera);
            session.applyCamera(camera);
            break;
        }
        case ViewKeyBindings::Action::kQuit:
            quit = true;
            break;
        default:
            break;
        }
        if (!result.message.empty()) {
            std::printf("%s\n", result.message.c_str());
            std::fflush(stdout);
        }
    });
    kv_shared_ptr<ViewOrbitOperator> tool(new ViewOrbitOperator(session.getScene(), session));
    session.getScene().setOperator(tool.get());
    ViewInput input(session.getScene());

    std::printf("%s\n", ViewKeyBindings::helpLine().c_str());
    std::fflush(stdout);
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    while (!quit && !gInterrupted.load()) {
        bool const open = window.pumpEvents([&](XEvent const& event) {
            if (event.type == ConfigureNotify)
                session.resize(window.getWidth(), window.getHeight());
            else
                input.feed(event, window.getWidth(), window.getHeight());
        });
        if (!open)
            break;
        for (kv_shared_ptr<CKVRCPickSelectObject> const& pick : session.takeAnsweredPicks())
            std::printf("%s\n", ViewPickReporter::describe(pick->getSelection(), content.products).c_str());
        std::fflush(stdout);
        std::this_thread::sleep_for(kPollInterval);
    }
    session.getScene().setOperator(nullptr);
    return kOk;
}

} // namespace Kelvor
