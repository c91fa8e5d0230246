#pragma once

#include "platform/TcpSocket.h"

#include <atomic>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

// Serves a real server program the way inetd does: listens on 127.0.0.1
// itself (an ephemeral port, so there is none to guess and no start-up to
// wait for) and starts the program for each connection it accepts, with the
// connection as its standard input and output and its errors appended to a
// log file. Each session runs in a process group of its own.
class InetdListener
{
public:
    // `argv` is the program's whole command line, its path first.
    InetdListener(std::vector<std::string> argv, std::string log);
    ~InetdListener();
    InetdListener(const InetdListener &) = delete;
    InetdListener &operator=(const InetdListener &) = delete;

    // Listens on `port` (0 for an ephemeral one) and serves; false when no
    // socket could be had. The port of a listener that was stopped is taken
    // again at once, though its dropped connections linger.
    bool Start(unsigned port = 0);
    // Shuts the listener: its sessions drop and connections are refused
    // until Start serves again.
    void Stop();
    // Ends every session at once, as a server process that dies does.
    void DropSessions();
    unsigned Port() const { return fPort; }
    // How many connections have been served so far.
    size_t Sessions() const { return fServed; }

private:
    bool Listen(unsigned port);
    void Serve();
    void Spawn(const platform::TcpSocket &connection);

    const std::vector<std::string> fArgv;
    const std::string fLog;
    platform::TcpSocket fListener;
    unsigned fPort = 0;
    std::atomic<bool> fStop{false};
    std::atomic<size_t> fServed{0};
    std::mutex fLock;
    std::vector<pid_t> fChildren;
    std::thread fThread;
};
