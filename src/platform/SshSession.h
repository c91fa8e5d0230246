#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct ssh_session_struct;

namespace platform {

class TcpSocket;

// What a server's host key is, as `ssh` shows it to a user who is asked to
// trust it: its type ("ssh-ed25519") and SHA-256 fingerprint
// ("SHA256:" and unpadded base64).
struct SshHostKey
{
    std::string type;
    std::string fingerprint;
};

// How the host key compares with the user's ~/.ssh/known_hosts.
enum class SshHostState {
    Known,   // the file holds this key for the host
    Unknown, // the file holds no key for the host (or there is no file)
    Changed, // the file holds another key for the host: refused, as ssh refuses it
    Failed,  // the key could not be read or the file not checked
};

// One conversation with an SSH server, through libssh, for SFTP. The TCP
// stream is ours (TcpSocket), opened under the caller's SocketInterrupt
// scope, so a newer request or Disconnect cuts a waiting call short at once
// from another thread. Host keys and the user's keys follow OpenSSH's files
// under $HOME/.ssh, whatever the password database names as the home.
//
// Used by one thread at a time.
class SshSession
{
public:
    SshSession();
    ~SshSession();
    SshSession(const SshSession &) = delete;
    SshSession &operator=(const SshSession &) = delete;

    // Connects and makes the key exchange; the server's key is then there
    // to check. B_OK, or the failure with *why in words for the user.
    status_t Connect(const std::string &host,
                     uint16_t port,
                     const std::string &user,
                     int timeoutMs,
                     std::string *why);
    SshHostState CheckHost(SshHostKey *key, std::string *why);
    // Adds the server's key to known_hosts, once the user accepted it.
    status_t TrustHost(std::string *why);

    // The ways of logging in, in the order OpenSSH tries them. Each answers
    // whether the server let the user in.
    bool AuthenticateWithAgent();
    // `passphrase` is asked for a key file that needs one (its path given);
    // nullopt skips that key. What it answers is never kept.
    using PassphrasePrompt = std::function<std::optional<std::string>(const std::string &keyPath)>;
    bool AuthenticateWithKeys(const PassphrasePrompt &passphrase);
    bool AuthenticateWithPassword(const std::string &password);
    bool IsAuthenticated() const { return fAuthenticated; }

    // libssh's last error, in its words.
    std::string LastError() const;
    // Connected, and the connection not found cut since.
    bool IsConnected() const;
    void Disconnect();

    // The libssh session, for the SFTP channel over it; null before Connect.
    ssh_session_struct *Handle() const { return fSession; }

private:
    std::string SshFolder() const;

    ssh_session_struct *fSession = nullptr;
    std::unique_ptr<TcpSocket> fSocket;
    bool fAuthenticated = false;
};

} // namespace platform
