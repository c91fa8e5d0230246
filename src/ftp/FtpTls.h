#pragma once

#include "platform/Errors.h"
#include "platform/TlsCertificate.h"

#include <functional>
#include <memory>
#include <string>

namespace platform {
class TcpSocket;
class TlsClient;
} // namespace platform

namespace kestrin {

// The TLS side of one FTP control connection and its data connections
// (explicit FTPS, RFC 4217): AUTH TLS after the greeting, the handshake,
// PBSZ 0 and PROT P, and then every data connection secured, resuming the
// control connection's TLS session, as servers ask (vsftpd's
// require_ssl_reuse). A server's certificate that the system does not vouch
// for is passed to the check, which says whether to go on; nothing of the
// login is sent before it has.
class FtpTls
{
public:
    enum class Choice {
        IfOffered, // TLS when the server takes AUTH TLS, else in clear
        Required,  // TLS or nothing: no login in clear
        Off,       // never asked for
    };
    enum class State {
        Off,     // not asked for (or not logged in)
        Secured, // the control connection is in TLS
        Refused, // the server refused AUTH TLS: everything goes in clear
    };
    // Codes of a login that TLS ended, before anything of the login was
    // sent: the server refused TLS that the session requires; the handshake
    // failed; the certificate was not accepted.
    static constexpr int kNotOffered = 8;
    static constexpr int kFailed = 9;
    static constexpr int kCertificateRefused = 10;

    // True to go on with a server whose certificate the system does not vouch
    // for; asked on the thread that logs in.
    using Check = std::function<bool(const platform::TlsCertificate &)>;
    // Sends a command and answers its reply's code.
    using Command = std::function<int(const std::string &)>;
    using Log = std::function<void(const std::string &)>;

    FtpTls();
    ~FtpTls();
    FtpTls(const FtpTls &) = delete;
    FtpTls &operator=(const FtpTls &) = delete;

    void Use(Choice choice, Check check);
    Choice Chosen() const { return fChoice; }

    // After the greeting of a login to `host`: 0 to go on with the login
    // (secured, or in clear where the choice allows), else the client's code
    // of the reply that did not come, or one of the three above.
    int Negotiate(platform::TcpSocket &control,
                  const std::string &host,
                  const Command &command,
                  const Log &log);
    // Secures a data connection when the server protects data (PROT P).
    status_t SecureData(platform::TcpSocket &data, std::string *why);
    State Outcome() const { return fState; }
    bool ProtectsData() const { return fProtected; }

    // What the user is told of a login that failed with `code`, when TLS
    // ended it and the user has not been told already; null otherwise.
    static const char *ProblemText(int code);

private:
    int Refused(int code, const Log &log);
    bool Accepted(const platform::TlsCertificate &peer, const Log &log) const;

    Choice fChoice = Choice::Off;
    Check fCheck;
    State fState = State::Off;
    bool fProtected = false;
    std::unique_ptr<platform::TlsClient> fClient;
};

} // namespace kestrin
