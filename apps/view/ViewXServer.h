#pragma once

#include <string>
#include <sys/types.h>

typedef struct _XDisplay Display;

namespace Kelvor {

// The X server the viewer draws on: the user's ($DISPLAY) when it answers,
// otherwise, for headless runs, a private Xvfb that lives exactly as long
// as this object. The render context opens its own connection to the same
// server by name, so DISPLAY is pointed at the private server too.
class ViewXServer
{
public:
    ViewXServer();
    ~ViewXServer();

    ViewXServer(ViewXServer const&) = delete;
    ViewXServer& operator=(ViewXServer const&) = delete;

    // True when $DISPLAY names a server that accepts a connection.
    static bool userDisplayAvailable();

    // Connects to the user's server, or starts a private one when
    // `allowPrivate` and there is none. False with `error` set otherwise.
    bool open(bool allowPrivate, std::string& error);
    void close();

    Display* getDisplay() const { return mDisplay; }
    bool isPrivate() const { return mServer > 0; }

private:
    bool startPrivateServer(std::string& error);
    void stopPrivateServer();

    Display* mDisplay = nullptr;
    pid_t mServer = -1;
};

} // namespace Kelvor
