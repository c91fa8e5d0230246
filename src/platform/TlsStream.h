#pragma once

#include "platform/Errors.h"
#include "platform/TlsCertificate.h"

#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>

struct ssl_st;

namespace platform {

class TlsClient;

// TLS over one connected stream socket, as its client: what TcpSocket sends
// and receives through once StartTls has secured it. The bytes go through
// the socket's descriptor with the socket's own calls (no SIGPIPE, the
// socket's time-outs), so a SocketInterrupt that shuts the socket down cuts
// a waiting read or write short here too. The descriptor stays the socket's.
class TlsStream
{
public:
    ~TlsStream();
    TlsStream(const TlsStream &) = delete;
    TlsStream &operator=(const TlsStream &) = delete;

    // The handshake over `fd`: B_OK with *stream set, B_TIMED_OUT, or
    // B_ERROR with *why saying what failed. The certificate's verdict does
    // not fail it; `peer`, when given, receives the certificate.
    static status_t Start(int fd,
                          TlsClient &client,
                          std::unique_ptr<TlsStream> *stream,
                          TlsCertificate *peer,
                          std::string *why);

    // As TcpSocket's: a count, 0 once the peer ended the stream, or a
    // negative status.
    ssize_t Send(const void *data, size_t size);
    ssize_t Receive(void *buffer, size_t size);
    // Whether bytes already arrived wait to be read: the socket may have
    // nothing more to say while they do.
    bool HasPending() const;
    // Says that nothing more will be sent (close_notify).
    void Finish();
    // Whether the handshake resumed the client's first session.
    bool Resumed() const;

private:
    struct Free
    {
        void operator()(ssl_st *connection) const;
    };

    explicit TlsStream(ssl_st *connection);
    ssize_t Failed(int result);

    std::unique_ptr<ssl_st, Free> fConnection;
    bool fFinished = false;
};

} // namespace platform
