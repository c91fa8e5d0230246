#pragma once

#include "platform/Errors.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>

namespace platform {

class SocketInterrupt;
class TlsClient;
class TlsStream;
struct TlsCertificate;

// An IPv4 address and port, both in host byte order.
struct SocketAddress
{
    uint32_t host = 0;
    uint16_t port = 0;

    // "a.b.c.d"
    std::string Dotted() const;
    // Parses "a.b.c.d" strictly; false for anything else.
    static bool FromDotted(const std::string &text, uint32_t *host);
};

// The first IPv4 address of `name`: a dotted address as it is, else a name
// look-up. B_NAME_NOT_FOUND when neither gives one.
status_t ResolveHost(const std::string &name, uint32_t *host);

// A TCP stream socket (IPv4), owned: the descriptor is closed when the object
// goes. A socket opened or accepted under a SocketInterrupt::Scope belongs to
// that interrupt. Calls that can fail answer a status from StatusFromErrno; Send and
// Receive answer a byte count or a negative status. Once StartTls has
// secured it, Send, Receive and WaitReady go through TLS, with the same
// answers.
class TcpSocket
{
public:
    TcpSocket();
    ~TcpSocket();

    TcpSocket(TcpSocket &&other) noexcept;
    TcpSocket &operator=(TcpSocket &&other) noexcept;
    TcpSocket(const TcpSocket &) = delete;
    TcpSocket &operator=(const TcpSocket &) = delete;

    // A connected pair of stream sockets inside this process (AF_UNIX), for
    // feeding a reader bytes without a network.
    static status_t CreatePair(TcpSocket *first, TcpSocket *second);

    // Makes the socket; any socket held before is closed.
    status_t Open();
    // Opens when needed and connects, giving up after `timeoutMs`.
    status_t Connect(const SocketAddress &address, int timeoutMs);
    // Binds to `host` (0 for any) and port 0, so the system picks the port.
    status_t BindEphemeral(uint32_t host);
    status_t Listen(int backlog);
    // Takes the next pending connection into `connection`.
    status_t Accept(TcpSocket *connection);

    // One send; the count sent or a negative status. Never raises SIGPIPE.
    ssize_t Send(const void *data, size_t size);
    // Sends everything, going on after short sends; B_OK or the failure.
    status_t SendAll(const void *data, size_t size);
    // One receive; the count, 0 when the peer has closed, or a negative status.
    ssize_t Receive(void *buffer, size_t size);

    // Waits until the socket can be read (or written) without blocking.
    // B_OK when ready, B_TIMED_OUT, B_BAD_DATA when urgent data is pending,
    // or the failure.
    status_t WaitReady(bool forReading, long seconds, long microseconds);
    // Bounds every later blocking Send and Receive.
    status_t SetTimeouts(long seconds, long microseconds);

    status_t LocalAddress(SocketAddress *address) const;
    status_t PeerAddress(SocketAddress *address) const;

    // The TLS handshake, as the client, over the connected socket: B_OK, the
    // time-out, or B_ERROR with *why telling what failed. The certificate
    // is judged but never refused here; *peer receives it and its verdict.
    status_t StartTls(TlsClient &client, TlsCertificate *peer = nullptr, std::string *why = nullptr);
    bool IsSecure() const { return fTls != nullptr; }
    // Whether the handshake resumed the TLS client's first session.
    bool ResumedTls() const;

    // Ends the sending side (after TLS's close_notify); the peer reads the
    // end of the stream.
    void ShutdownSend();
    void Close();
    bool IsOpen() const { return fFD >= 0; }
    // The descriptor, for handing the connection to a child process; -1 when none.
    int FD() const { return fFD; }

private:
    explicit TcpSocket(int fd);
    void Adopt();

    int fFD = -1;
    SocketInterrupt *fInterrupt = nullptr;
    std::unique_ptr<TlsStream> fTls;
};

} // namespace platform
