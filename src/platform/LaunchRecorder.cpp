#include "platform/LaunchRecorder.h"

namespace platform {

LaunchRecorder::LaunchRecorder()
    : fPrevious(Launcher::SetSink(this))
{}

LaunchRecorder::~LaunchRecorder()
{
    Launcher::SetSink(fPrevious);
}

status_t LaunchRecorder::Start(const Launch &launch)
{
    std::lock_guard lock(fLock);
    fLaunches.push_back(launch);
    return fResult;
}

void LaunchRecorder::SetResult(status_t result)
{
    std::lock_guard lock(fLock);
    fResult = result;
}

std::vector<Launch> LaunchRecorder::Launches() const
{
    std::lock_guard lock(fLock);
    return fLaunches;
}

} // namespace platform
