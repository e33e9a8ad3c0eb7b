#pragma once

#include <osg/Notify>

#include <cstdio>

namespace Kelvor {

// Writes OpenSceneGraph's notifications to "log.txt" beside the library.
// Nothing in the library installs it: OpenSceneGraph's own notification stays
// in force unless an application calls osg::setNotifyHandler with one.
class KVNotifyHandler : public osg::NotifyHandler
{
public:
    KVNotifyHandler();

    void notify(osg::NotifySeverity severity, char const* message) override;

    // False when the log file could not be opened; notifications are then dropped.
    bool isOpen() const { return mFile != nullptr; }

protected:
    ~KVNotifyHandler() override;

private:
    std::FILE* mFile = nullptr;
};

} // namespace Kelvor
