#pragma once

#include "InetdListener.h"
#include "TempHome.h"

#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

// OpenSSH's sshd on 127.0.0.1, for the SFTP tests, started as `sshd -i` for
// each connection (see InetdListener). sshd runs as the user who runs the
// test and lets that user in with the fixture's key (UserKey()) or with
// Password(). sshd takes the password, and whether the account is open at
// all, from /etc/shadow, which the fixture may neither change nor (unless
// root) read: so each sshd starts in a mount namespace of its own, where a
// shadow file the fixture wrote lies over /etc/shadow (inside user
// namespaces for a user other than root).
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
    // The password that logs the user in, and why it cannot here (empty
    // when it can).
    static std::string Password();
    std::string PasswordUnavailable() const { return fPasswordUnavailable; }
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

    enum class Trust { Nothing, Key, KeyAndHost };
    // Makes `home` that of an ssh user with no agent and an ~/.ssh that
    // holds, as `trust` says, the key that logs in and this host's key.
    void PrepareHome(TempHome &home, Trust trust) const;

private:
    bool MakeKey(const std::string &path) const;
    // sshd's configuration, with password logins or without; its path.
    std::string WriteConfig(bool passwords) const;
    // `command` run in a mount namespace where the fixture's shadow file
    // lies over /etc/shadow.
    std::vector<std::string> WithOwnShadow(const std::vector<std::string> &command) const;
    // Whether `command` gets the shadow file on this machine.
    bool CanHaveOwnShadow() const;

    QTemporaryDir fDir;
    std::string fUnavailable;
    std::string fPasswordUnavailable;
    std::unique_ptr<InetdListener> fListener;
};
