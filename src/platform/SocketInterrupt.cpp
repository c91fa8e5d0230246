#include "platform/SocketInterrupt.h"

#include <sys/socket.h>
#include <unistd.h>

namespace platform {

namespace {

thread_local SocketInterrupt *tCurrent = nullptr;

} // namespace

SocketInterrupt::Scope::Scope(SocketInterrupt *interrupt)
    : fPrevious(tCurrent)
{
    tCurrent = interrupt;
}

SocketInterrupt::Scope::~Scope()
{
    tCurrent = fPrevious;
}

SocketInterrupt *SocketInterrupt::Current()
{
    return tCurrent;
}

void SocketInterrupt::Trigger()
{
    std::lock_guard<std::mutex> hold(fLock);
    fTriggered = true;
    // Shutting down both directions wakes every kind of wait on the socket:
    // a connect in progress is abandoned, a listener stops accepting.
    for (const int fd : fSockets)
        shutdown(fd, SHUT_RDWR);
}

bool SocketInterrupt::Triggered() const
{
    std::lock_guard<std::mutex> hold(fLock);
    return fTriggered;
}

void SocketInterrupt::Reset()
{
    std::lock_guard<std::mutex> hold(fLock);
    fTriggered = false;
}

void SocketInterrupt::Adopt(int fd)
{
    std::lock_guard<std::mutex> hold(fLock);
    fSockets.insert(fd);
    if (fTriggered)
        shutdown(fd, SHUT_RDWR);
}

void SocketInterrupt::Close(int fd)
{
    std::lock_guard<std::mutex> hold(fLock);
    fSockets.erase(fd);
    ::close(fd);
}

} // namespace platform
