#pragma once

#include "InetdListener.h"
#include "platform/TcpSocket.h"

#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <sys/types.h>

// Debian's vsftpd serving a temporary root to anonymous users on 127.0.0.1.
// The fixture listens on an ephemeral port itself and starts vsftpd in inetd
// mode for each connection it accepts, so there is no port to guess and no
// start-up to wait for. vsftpd runs as the user who started it, so there is
// no chroot: the session starts in Root(), PWD answers absolute local paths,
// and tests use paths relative to Root(). "upload" is the folder to write in.
class VsftpdServer
{
public:
    struct Options
    {
        // Above 0, each transfer is bounded to that many bytes a second, so
        // that a test can act while one is under way.
        unsigned bytesPerSecond = 0;
        // Explicit TLS, required for logins and data, with a self-signed
        // certificate the fixture makes; data connections must resume the
        // control connection's TLS session (require_ssl_reuse).
        bool tls = false;
        // Anonymous logins are asked for a password, so a client sends PASS.
        bool askPassword = false;
    };

    explicit VsftpdServer(unsigned bytesPerSecond = 0);
    explicit VsftpdServer(const Options &options);
    ~VsftpdServer();

    VsftpdServer(const VsftpdServer &) = delete;
    VsftpdServer &operator=(const VsftpdServer &) = delete;

    // Why vsftpd cannot serve here, or empty.
    std::string Unavailable() const { return fUnavailable; }
    unsigned Port() const { return fListener != nullptr ? fListener->Port() : 0; }
    std::string Root() const;
    std::string Scratch() const;
    // Every command and reply of the sessions so far, as vsftpd logs them.
    std::string ProtocolLog() const;
    // How many times `part` stands in that log.
    size_t Logged(const std::string &part) const;
    // The SHA-256 fingerprint of the certificate the sessions show, as
    // `openssl x509` gives it ("AB:CD:..."); empty without TLS.
    std::string Fingerprint() const { return fFingerprint; }
    // A new certificate (and key) for the sessions that start from now on.
    bool RenewCertificate();

    // Ends every session at once, as a server process that dies does: the
    // connections drop, whatever they were doing. New ones are still served.
    void DropSessions();
    // How many connections have been served so far.
    size_t Sessions() const { return fListener != nullptr ? fListener->Sessions() : 0; }
    // Shuts the server down: its sessions drop and connections are refused
    // until Start serves again, on the same port.
    void Stop();
    bool Start();

private:
    QTemporaryDir fDir;
    std::string fConfig;
    std::string fUnavailable;
    std::string fFingerprint;
    // None where vsftpd cannot serve.
    std::unique_ptr<InetdListener> fListener;
};

// pyftpdlib with one user "kestrin", password "secret", for the login paths
// vsftpd would need a system account for, and for the machine listings
// (MLSD) that vsftpd lacks.
class PyftpdlibServer
{
public:
    // The user's folder is `root` when given, else a temporary one; a
    // session idle for `idleSeconds` (when above 0) is ended with 421, as
    // servers end idle sessions.
    explicit PyftpdlibServer(const std::string &root = {}, unsigned idleSeconds = 0);
    ~PyftpdlibServer();

    std::string Unavailable() const { return fUnavailable; }
    unsigned Port() const { return fPort; }
    // The folder the user logs in to, "/" on the server.
    std::string Root() const { return fRoot; }

private:
    QTemporaryDir fDir;
    std::string fRoot;
    QProcess fProcess;
    std::string fUnavailable;
    unsigned fPort = 0;
};
