#pragma once

#include "platform/TcpSocket.h"

#include <atomic>
#include <thread>

// A server on 127.0.0.1 that accepts connections one after another and
// never says a word: each connection is held until the client closes it.
// `Closed()` counts the connections the client closed, which a client
// waiting for a greeting does only when something cuts it short.
class SilentServer
{
public:
    static constexpr long kWaitSeconds = 30;

    explicit SilentServer(int connections)
    {
        fListener.Open();
        fListener.BindEphemeral(0x7f000001);
        fListener.Listen(4);
        platform::SocketAddress local;
        fListener.LocalAddress(&local);
        fPort = local.port;
        fThread = std::thread([this, connections] {
            for (int i = 0; i < connections; i++) {
                platform::TcpSocket connection;
                if (fListener.WaitReady(true, kWaitSeconds, 0) != B_OK
                    || fListener.Accept(&connection) != B_OK)
                    return;
                fAccepted++;
                // Whatever the client sends (QUIT) is read until it closes;
                // a client that stays silent past the wait counts as open.
                char byte;
                while (connection.WaitReady(true, kWaitSeconds, 0) == B_OK) {
                    if (connection.Receive(&byte, 1) <= 0) {
                        fClosed++;
                        break;
                    }
                }
            }
        });
    }
    ~SilentServer() { fThread.join(); }

    unsigned Port() const { return fPort; }
    int Accepted() const { return fAccepted; }
    int Closed() const { return fClosed; }

private:
    platform::TcpSocket fListener;
    unsigned fPort = 0;
    std::atomic<int> fAccepted{0};
    std::atomic<int> fClosed{0};
    std::thread fThread;
};
