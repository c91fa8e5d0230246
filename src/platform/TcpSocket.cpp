#include "platform/TcpSocket.h"

#include "platform/SocketInterrupt.h"
#include "platform/TlsStream.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace platform {

namespace {

sockaddr_in ToSockaddr(const SocketAddress &address)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(address.port);
    result.sin_addr.s_addr = htonl(address.host);
    return result;
}

SocketAddress FromSockaddr(const sockaddr_in &address)
{
    return SocketAddress{ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)};
}

// Waits for `events` on `fd`; the poll result's revents, 0 on time-out, or -1.
int PollFor(int fd, short events, long seconds, long microseconds)
{
    pollfd entry{fd, short(events | POLLPRI), 0};
    timespec limit{};
    limit.tv_sec = seconds < 0 ? 0 : seconds;
    limit.tv_nsec = microseconds < 0 ? 0 : microseconds * 1000;
    while (limit.tv_nsec >= 1000000000) {
        limit.tv_sec++;
        limit.tv_nsec -= 1000000000;
    }
    int result;
    do {
        result = ppoll(&entry, 1, &limit, nullptr);
    } while (result < 0 && errno == EINTR);
    if (result <= 0)
        return result;
    return entry.revents;
}

} // namespace

std::string SocketAddress::Dotted() const
{
    return std::to_string((host >> 24) & 0xff) + "." + std::to_string((host >> 16) & 0xff) + "."
           + std::to_string((host >> 8) & 0xff) + "." + std::to_string(host & 0xff);
}

bool SocketAddress::FromDotted(const std::string &text, uint32_t *host)
{
    in_addr parsed{};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1)
        return false;
    *host = ntohl(parsed.s_addr);
    return true;
}

status_t ResolveHost(const std::string &name, uint32_t *host)
{
    if (SocketAddress::FromDotted(name, host))
        return B_OK;
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0 || found == nullptr)
        return B_NAME_NOT_FOUND;
    *host = ntohl(reinterpret_cast<sockaddr_in *>(found->ai_addr)->sin_addr.s_addr);
    freeaddrinfo(found);
    return B_OK;
}

TcpSocket::TcpSocket() = default;

TcpSocket::TcpSocket(int fd)
    : fFD(fd)
{}

TcpSocket::~TcpSocket()
{
    Close();
}

TcpSocket::TcpSocket(TcpSocket &&other) noexcept
    : fFD(other.fFD)
    , fInterrupt(other.fInterrupt)
    , fTls(std::move(other.fTls))
{
    other.fFD = -1;
    other.fInterrupt = nullptr;
}

TcpSocket &TcpSocket::operator=(TcpSocket &&other) noexcept
{
    if (this != &other) {
        Close();
        fFD = other.fFD;
        fInterrupt = other.fInterrupt;
        fTls = std::move(other.fTls);
        other.fFD = -1;
        other.fInterrupt = nullptr;
    }
    return *this;
}

status_t TcpSocket::CreatePair(TcpSocket *first, TcpSocket *second)
{
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0)
        return LastError();
    *first = TcpSocket(fds[0]);
    *second = TcpSocket(fds[1]);
    return B_OK;
}

status_t TcpSocket::Open()
{
    Close();
    fFD = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fFD < 0)
        return LastError();
    Adopt();
    return B_OK;
}

void TcpSocket::Adopt()
{
    fInterrupt = SocketInterrupt::Current();
    if (fInterrupt != nullptr)
        fInterrupt->Adopt(fFD);
}

status_t TcpSocket::Connect(const SocketAddress &address, int timeoutMs)
{
    if (!IsOpen()) {
        const status_t opened = Open();
        if (opened != B_OK)
            return opened;
    }
    // Non-blocking only for the connect, so the wait for an unresponsive host
    // is bounded; the socket blocks again afterwards.
    const int flags = fcntl(fFD, F_GETFL);
    fcntl(fFD, F_SETFL, flags | O_NONBLOCK);
    const sockaddr_in target = ToSockaddr(address);
    int result = connect(fFD, reinterpret_cast<const sockaddr *>(&target), sizeof target);
    status_t status = B_OK;
    // Interrupted before the connection was under way: a shutdown would not
    // have reached it.
    if (result != 0 && errno == EINPROGRESS && fInterrupt != nullptr && fInterrupt->Triggered()) {
        status = B_CANCELED;
    } else if (result != 0 && errno == EINPROGRESS) {
        const int events = PollFor(fFD, POLLOUT, timeoutMs / 1000, long(timeoutMs % 1000) * 1000);
        if (events == 0) {
            status = B_TIMED_OUT;
        } else if (events < 0) {
            status = LastError();
        } else {
            int error = 0;
            socklen_t length = sizeof error;
            getsockopt(fFD, SOL_SOCKET, SO_ERROR, &error, &length);
            status = StatusFromErrno(error);
        }
    } else if (result != 0) {
        status = LastError();
    }
    fcntl(fFD, F_SETFL, flags);
    return status;
}

status_t TcpSocket::BindEphemeral(uint32_t host)
{
    const sockaddr_in local = ToSockaddr(SocketAddress{host, 0});
    if (bind(fFD, reinterpret_cast<const sockaddr *>(&local), sizeof local) != 0)
        return LastError();
    return B_OK;
}

status_t TcpSocket::Listen(int backlog)
{
    return listen(fFD, backlog) == 0 ? B_OK : LastError();
}

status_t TcpSocket::Accept(TcpSocket *connection)
{
    int fd;
    do {
        fd = accept4(fFD, nullptr, nullptr, SOCK_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return LastError();
    *connection = TcpSocket(fd);
    connection->Adopt();
    return B_OK;
}

ssize_t TcpSocket::Send(const void *data, size_t size)
{
    if (fTls != nullptr)
        return fTls->Send(data, size);
    ssize_t sent;
    do {
        sent = send(fFD, data, size, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent < 0 ? ssize_t(LastError()) : sent;
}

status_t TcpSocket::SendAll(const void *data, size_t size)
{
    const char *next = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t sent = Send(next, size);
        if (sent < 0)
            return status_t(sent);
        if (sent == 0)
            return B_ERROR;
        next += sent;
        size -= size_t(sent);
    }
    return B_OK;
}

ssize_t TcpSocket::Receive(void *buffer, size_t size)
{
    if (fTls != nullptr)
        return fTls->Receive(buffer, size);
    ssize_t received;
    do {
        received = recv(fFD, buffer, size, 0);
    } while (received < 0 && errno == EINTR);
    return received < 0 ? ssize_t(LastError()) : received;
}

status_t TcpSocket::WaitReady(bool forReading, long seconds, long microseconds)
{
    if (!IsOpen())
        return B_BAD_VALUE;
    // What TLS has read ahead is there to be read, whatever the socket says.
    if (forReading && fTls != nullptr && fTls->HasPending())
        return B_OK;
    const int events = PollFor(fFD, forReading ? POLLIN : POLLOUT, seconds, microseconds);
    if (events == 0)
        return B_TIMED_OUT;
    if (events < 0)
        return LastError();
    if (events & POLLPRI)
        return B_BAD_DATA;
    // An error or hang-up makes the next call return at once, as select
    // reports it: ready.
    return B_OK;
}

status_t TcpSocket::SetTimeouts(long seconds, long microseconds)
{
    timeval limit{};
    limit.tv_sec = seconds;
    limit.tv_usec = microseconds;
    if (setsockopt(fFD, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) != 0
        || setsockopt(fFD, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0)
        return LastError();
    return B_OK;
}

status_t TcpSocket::LocalAddress(SocketAddress *address) const
{
    sockaddr_in local{};
    socklen_t length = sizeof local;
    if (getsockname(fFD, reinterpret_cast<sockaddr *>(&local), &length) != 0)
        return LastError();
    if (local.sin_family != AF_INET)
        return B_UNSUPPORTED;
    *address = FromSockaddr(local);
    return B_OK;
}

status_t TcpSocket::PeerAddress(SocketAddress *address) const
{
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    if (getpeername(fFD, reinterpret_cast<sockaddr *>(&peer), &length) != 0)
        return LastError();
    if (peer.sin_family != AF_INET)
        return B_UNSUPPORTED;
    *address = FromSockaddr(peer);
    return B_OK;
}

status_t TcpSocket::StartTls(TlsClient &client, TlsCertificate *peer, std::string *why)
{
    if (!IsOpen())
        return B_BAD_VALUE;
    fTls.reset();
    return TlsStream::Start(fFD, client, &fTls, peer, why);
}

bool TcpSocket::ResumedTls() const
{
    return fTls != nullptr && fTls->Resumed();
}

void TcpSocket::ShutdownSend()
{
    if (!IsOpen())
        return;
    if (fTls != nullptr)
        fTls->Finish();
    shutdown(fFD, SHUT_WR);
}

void TcpSocket::Close()
{
    fTls.reset();
    if (fFD < 0)
        return;
    if (fInterrupt != nullptr)
        fInterrupt->Close(fFD);
    else
        ::close(fFD);
    fFD = -1;
    fInterrupt = nullptr;
}

} // namespace platform
