#pragma once

#include "apps/view/ViewRenderSettings.h"

#include <string>

namespace Kelvor {

class CKVEvent;

// The viewer's keys. Render keys change the settings and ask for the
// configuration to be sent; the others ask the application to act.
class ViewKeyBindings
{
public:
    enum class Action { kNone, kApplyConfig, kResetView, kHelp, kQuit };

    struct Result
    {
        Action action = Action::kNone;
        // What changed, for the status line; empty when nothing did.
        std::string message;
    };

    explicit ViewKeyBindings(ViewRenderSettings& settings);

    Result handle(CKVEvent const& event);
    // Key code of a digit or lower-case letter, as the host delivers it.
    Result handleKey(int ansiKey, unsigned int sysKeys);

    // One line naming every key.
    static std::string helpLine();

private:
    ViewRenderSettings& mSettings;
};

} // namespace Kelvor
