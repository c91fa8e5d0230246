#pragma once

#include "InetdListener.h"

#include <QTemporaryDir>
#include <memory>
#include <string>

// OpenSSH's sshd on 127.0.0.1, for the SFTP tests, started as `sshd -i` for
// each connection (see InetdListener). sshd runs as the
// user who runs the test and lets that user in with the key the fixture made
// (UserKey()); the host key is the fixture's own, and can be replaced.
class SshdServer
{
public:
    SshdServer();
    ~SshdServer();
    SshdServer(const SshdServer &) = delete;
    SshdServer &operator=(const SshdServer &) = delete;

    // Why sshd cannot serve here, or empty.
    std::string Unavailable() const { return fUnavailable; }
    unsigned Port() const { return fListener != nullptr ? fListener->Port() : 0; }
    // The user sshd lets in: the one running the test.
    static std::string User();
    // The private key that logs the user in, without a passphrase.
    std::string UserKey() const;
    // The host key's known_hosts line, as `ssh` writes it for this server.
    std::string KnownHostsLine() const;
    // The host key's "SHA256:..." fingerprint, as ssh-keygen -l shows it.
    std::string Fingerprint() const;
    // A new host key for the connections from now on.
    bool ReplaceHostKey();
    // A folder for the test's remote files.
    std::string Scratch() const;
    // Ends every session at once, as a server that dies does.
    void DropSessions();

private:
    bool MakeKey(const std::string &path) const;

    QTemporaryDir fDir;
    std::string fUnavailable;
    std::unique_ptr<InetdListener> fListener;
};
