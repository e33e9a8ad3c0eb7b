#include "apps/view/ViewKeyBindings.h"

#include "TarnwickRender/CKVEvent.h"

namespace Kelvor {

ViewKeyBindings::ViewKeyBindings(ViewRenderSettings& settings)
    : mSettings(settings)
{
}

std::string ViewKeyBindings::helpLine()
{
    return "keys: left drag orbit, middle/right drag pan, wheel zoom, click pick | "
           "s style, b background, f fog, d shadows, a ambient occlusion, m atmosphere, c culling, "
           "t an hour later, r reset view, h help, q/Esc quit";
}

ViewKeyBindings::Result ViewKeyBindings::handle(CKVEvent const& event)
{
    return handleKey(event.getAnsiKey(), event.getSysKeys());
}

ViewKeyBindings::Result ViewKeyBindings::handleKey(int ansiKey, unsigned int sysKeys)
{
    Result result;
    if (sysKeys & CKVEvent::kEscape) {
        result.action = Action::kQuit;
        return result;
    }
    auto apply = [&result](std::string message) {
        result.action = Action::kApplyConfig;
        result.message = std::move(message);
    };
    switch (ansiKey) {
    case 's':
        apply(mSettings.nextStyle());
        break;
    case 'b':
        apply(mSettings.nextBackground());
        break;
    case 'f':
        apply(mSettings.toggleFog());
        break;
    case 'd':
        apply(mSettings.toggleShadows());
        break;
    case 'a':
        apply(mSettings.toggleAmbientOcclusion());
        break;
    case 'm':
        apply(mSettings.toggleAtmosphere());
        break;
    case 'c':
        apply(mSettings.toggleCulling());
        break;
    case 't':
        apply(mSettings.nextHour());
        break;
    case 'r':
        result.action = Action::kResetView;
        result.message = "view reset";
        break;
    case 'h':
        result.action = Action::kHelp;
        result.message = helpLine();
        break;
    case 'q':
        result.action = Action::kQuit;
        break;
    default:
        break;
    }
    return result;
}

} // namespace Kelvor
