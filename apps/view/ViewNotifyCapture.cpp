#include "apps/view/ViewNotifyCapture.h"

#include <cctype>

namespace Kelvor {

class ViewNotifyCapture::Handler : public osg::NotifyHandler
{
public:
    void notify(osg::NotifySeverity severity, char const* message) override
    {
        if (severity > osg::WARN || !message)
            return;
        std::string line(message);
        for (char& c : line) {
            if (c == '\n' || c == '\r')
                c = ' ';
        }
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())))
            line.pop_back();
        if (!line.empty())
            mLast = line;
    }

    std::string mLast;
};

ViewNotifyCapture::ViewNotifyCapture()
    : mHandler(new Handler)
    , mPrevious(osg::getNotifyHandler())
{
    osg::setNotifyHandler(mHandler.get());
}

ViewNotifyCapture::~ViewNotifyCapture()
{
    osg::setNotifyHandler(mPrevious.get());
}

std::string ViewNotifyCapture::lastProblem() const
{
    return mHandler->mLast;
}

} // namespace Kelvor
