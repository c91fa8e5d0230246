#pragma once

#include "platform/Errors.h"

#include <deque>
#include <string>

struct ssl_ctx_st;
struct ssl_session_st;
struct ssl_st;

namespace platform {

// The client side of TLS for one server: what the connections to it share.
// The connections after the first (an FTP control connection) resume its
// session, as FTP servers ask of data connections (vsftpd's
// require_ssl_reuse): one that comes with a fresh handshake could be
// anybody's. Certificates are judged against the system's trust store and
// `serverName`, but a handshake never fails on them: the caller sees the
// verdict (TcpSocket::StartTls) and decides.
//
// Owned by one thread at a time; outlives nothing it serves by necessity: a
// connection still secured after it went merely stops passing on sessions.
class TlsClient
{
public:
    // `serverName`: the host name or address as the user gave it.
    explicit TlsClient(std::string serverName);
    ~TlsClient();

    TlsClient(const TlsClient &) = delete;
    TlsClient &operator=(const TlsClient &) = delete;

    status_t InitCheck() const { return fContext != nullptr ? B_OK : B_NO_INIT; }
    const std::string &ServerName() const { return fServerName; }

    // For TlsStream: a new connection's TLS state, set up to check the
    // server's name and to resume the session of the first connection when
    // there is one; null when OpenSSL fails.
    ssl_st *NewConnection();
    // Whether a connection resumed the first connection's session.
    static bool Resumed(const ssl_st *connection);

private:
    static int KeepSession(ssl_st *connection, ssl_session_st *session);

    std::string fServerName;
    ssl_ctx_st *fContext = nullptr;
    bool fFirstMade = false;
    // The sessions to resume, the ones not used yet first. TLS 1.3 servers
    // send their tickets after the handshake, and a new one with each
    // resumed connection; a server may take each ticket only once, so an
    // unused one is taken while there is one, and a used one after that.
    std::deque<ssl_session_st *> fSessions;
};

} // namespace platform
