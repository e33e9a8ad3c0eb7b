#pragma once

#include <osg/Notify>
#include <osg/ref_ptr>

#include <string>

namespace Kelvor {

// Holds back OpenSceneGraph's notices while it lives, instead of letting
// every reader-writer print its own lines: a file the viewer refuses is
// one line on stderr, and the last notice can tell why. The handler that was
// in place before comes back on destruction.
class ViewNotifyCapture
{
public:
    ViewNotifyCapture();
    ~ViewNotifyCapture();
    ViewNotifyCapture(ViewNotifyCapture const&) = delete;
    ViewNotifyCapture& operator=(ViewNotifyCapture const&) = delete;

    // The last warning or error on one line; empty when there was none.
    std::string lastProblem() const;

private:
    class Handler;

    osg::ref_ptr<Handler> mHandler;
    osg::ref_ptr<osg::NotifyHandler> mPrevious;
};

} // namespace Kelvor
