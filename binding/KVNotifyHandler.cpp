#include "binding/KVNotifyHandler.h"

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/Common.h"

#include <ctime>

namespace Kelvor {

namespace {

// Indexed by osg::NotifySeverity; ALWAYS (0) is not logged.
char const* const kSeverityFormats[] = {
    nullptr,
    "FATAL: %s\n",
    "WARN: %s\n",
    "NOTICE: %s\n",
    "INFO: %s\n",
    "DEBUG_INFO: %s\n",
    "DEBUG_FP: %s\n",
};

} // namespace

KVNotifyHandler::KVNotifyHandler()
{
    CKVAString path;
    Common::getModuleDirectory(path);
    path.append("/log.txt");
    mFile = std::fopen(path.c_str(), "w");
}

KVNotifyHandler::~KVNotifyHandler()
{
    if (mFile)
        std::fclose(mFile);
}

void KVNotifyHandler::notify(osg::NotifySeverity severity, char const* message)
{
    if (!mFile || !message || message[0] == '\0')
        return;
    if (severity < osg::FATAL || severity > osg::DEBUG_FP)
        return;

    std::time_t const now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::fprintf(mFile, "Time: %d:%d:%d\n", local.tm_hour, local.tm_min, local.tm_sec);
    std::fprintf(mFile, kSeverityFormats[severity], message);
    // Flushed at once so that the log survives the crash it may be explaining.
    std::fflush(mFile);
}

} // namespace Kelvor
