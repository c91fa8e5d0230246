#pragma once

#include <mutex>
#include <unordered_set>

namespace platform {

// Cuts short, from any thread, every blocking call on the sockets that one
// worker uses: a conversation with a slow or silent server ends at once when
// the user asks for something newer, instead of after the time-out.
//
// The sockets a thread opens or accepts while a Scope is active on it belong
// to the interrupt until they are closed. Trigger shuts them all down (a
// waiting receive, send, accept, connect or poll returns) and keeps new ones
// from connecting until Reset.
class SocketInterrupt
{
public:
    class Scope
    {
    public:
        explicit Scope(SocketInterrupt *interrupt);
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        SocketInterrupt *fPrevious;
    };

    SocketInterrupt() = default;
    SocketInterrupt(const SocketInterrupt &) = delete;
    SocketInterrupt &operator=(const SocketInterrupt &) = delete;

    // Any thread.
    void Trigger();
    bool Triggered() const;
    // Lets the sockets opened afterwards work again; the ones shut down stay so.
    void Reset();

    // The interrupt of the calling thread's active Scope, or null.
    static SocketInterrupt *Current();

    // For TcpSocket: takes a new descriptor in, and closes one, so that a
    // descriptor is never shut down after its number went to another file.
    void Adopt(int fd);
    void Close(int fd);

private:
    mutable std::mutex fLock;
    std::unordered_set<int> fSockets; // guarded by fLock
    bool fTriggered = false;          // guarded by fLock
};

} // namespace platform
