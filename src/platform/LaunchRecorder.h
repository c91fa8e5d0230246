#pragma once

#include "platform/Launcher.h"

#include <mutex>
#include <vector>

namespace platform {

// Stands in for real launching while it exists: keeps every launch and starts
// nothing. Safe to use from worker threads.
class LaunchRecorder : public LaunchSink
{
public:
    LaunchRecorder();
    ~LaunchRecorder() override;

    LaunchRecorder(const LaunchRecorder &) = delete;
    LaunchRecorder &operator=(const LaunchRecorder &) = delete;

    status_t Start(const Launch &launch) override;

    // What Start answers from now on (B_OK unless set).
    void SetResult(status_t result);
    std::vector<Launch> Launches() const;

private:
    LaunchSink *fPrevious;
    mutable std::mutex fLock;
    std::vector<Launch> fLaunches; // guarded by fLock
    status_t fResult = B_OK;       // guarded by fLock
};

} // namespace platform
