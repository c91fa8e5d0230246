#include "platform/SshSession.h"

#include "platform/Paths.h"
#include "platform/TcpSocket.h"

#include <libssh/libssh.h>

#include <array>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

// The key files OpenSSH offers by default, strongest first.
constexpr std::array kKeyFiles{"id_ed25519", "id_ecdsa", "id_rsa"};

std::string ConnectFailure(status_t status, const std::string &host)
{
    if (status == B_NAME_NOT_FOUND)
        return "The host \"" + host + "\" cannot be found.";
    if (status == B_TIMED_OUT)
        return "The host \"" + host + "\" does not answer.";
    if (status == B_CANCELED)
        return "The connection was cancelled.";
    return "The host \"" + host + "\" refuses the connection.";
}

} // namespace

SshSession::SshSession() = default;

SshSession::~SshSession()
{
    Disconnect();
}

std::string SshSession::SshFolder() const
{
    std::string home;
    if (FindDirectory(DirectoryWhich::Home, &home) != B_OK)
        return {};
    return home + "/.ssh";
}

status_t SshSession::Connect(const std::string &host,
                             uint16_t port,
                             const std::string &user,
                             int timeoutMs,
                             std::string *why)
{
    Disconnect();
    SocketAddress address{0, port};
    status_t status = ResolveHost(host, &address.host);
    if (status == B_OK) {
        fSocket = std::make_unique<TcpSocket>();
        status = fSocket->Connect(address, timeoutMs);
    }
    if (status != B_OK) {
        *why = ConnectFailure(status, host);
        fSocket.reset();
        return status;
    }
    fSession = ssh_new();
    // libssh closes the descriptor it is given; ours stays with the socket,
    // which the interrupt shuts down.
    int descriptor = dup(fSocket->FD());
    // Each SFTP write waits for its answer: a small last packet held back
    // for the delayed acknowledgement of the one before costs tens of
    // milliseconds per block, as ssh itself knows.
    const int noDelay = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    const std::string folder = SshFolder();
    const std::string knownHosts = folder + "/known_hosts";
    const long timeoutSeconds = std::max(1, timeoutMs / 1000);
    const int logLevel = SSH_LOG_NOLOG;
    // The session file names the host, port and user; ~/.ssh/config could
    // send the connection elsewhere than the pane says.
    const int processConfig = 0;
    unsigned int sshPort = port;
    ssh_options_set(fSession, SSH_OPTIONS_FD, &descriptor);
    ssh_options_set(fSession, SSH_OPTIONS_HOST, host.c_str());
    ssh_options_set(fSession, SSH_OPTIONS_PORT, &sshPort);
    ssh_options_set(fSession, SSH_OPTIONS_USER, user.c_str());
    ssh_options_set(fSession, SSH_OPTIONS_SSH_DIR, folder.c_str());
    ssh_options_set(fSession, SSH_OPTIONS_KNOWNHOSTS, knownHosts.c_str());
    ssh_options_set(fSession, SSH_OPTIONS_TIMEOUT, &timeoutSeconds);
    ssh_options_set(fSession, SSH_OPTIONS_LOG_VERBOSITY, &logLevel);
    ssh_options_set(fSession, SSH_OPTIONS_PROCESS_CONFIG, &processConfig);
    if (ssh_connect(fSession) != SSH_OK) {
        *why = "The SSH server cannot be reached: " + LastError();
        Disconnect();
        return B_IO_ERROR;
    }
    return B_OK;
}

SshHostState SshSession::CheckHost(SshHostKey *key, std::string *why)
{
    ssh_key serverKey = nullptr;
    if (fSession == nullptr || ssh_get_server_publickey(fSession, &serverKey) != SSH_OK) {
        *why = "The server's host key cannot be read.";
        return SshHostState::Failed;
    }
    unsigned char *hash = nullptr;
    size_t length = 0;
    if (ssh_get_publickey_hash(serverKey, SSH_PUBLICKEY_HASH_SHA256, &hash, &length) == SSH_OK) {
        char *text = ssh_get_fingerprint_hash(SSH_PUBLICKEY_HASH_SHA256, hash, length);
        key->fingerprint = text != nullptr ? text : "";
        ssh_string_free_char(text);
        ssh_clean_pubkey_hash(&hash);
    }
    const char *type = ssh_key_type_to_char(ssh_key_type(serverKey));
    key->type = type != nullptr ? type : "unknown";
    ssh_key_free(serverKey);

    switch (ssh_session_is_known_server(fSession)) {
    case SSH_KNOWN_HOSTS_OK:
        return SshHostState::Known;
    case SSH_KNOWN_HOSTS_NOT_FOUND:
    case SSH_KNOWN_HOSTS_UNKNOWN:
        return SshHostState::Unknown;
    case SSH_KNOWN_HOSTS_CHANGED:
    case SSH_KNOWN_HOSTS_OTHER:
        // A key of another type than the one on record is as suspect as a
        // changed one: OpenSSH refuses both unless the user edits the file.
        *why = "The server's host key has changed. Someone could be eavesdropping on the "
               "connection, or the server's key was replaced. Remove the old key from "
               + SshFolder() + "/known_hosts if you know why it changed.";
        return SshHostState::Changed;
    default:
        *why = "The file of known hosts cannot be read: " + LastError();
        return SshHostState::Failed;
    }
}

status_t SshSession::TrustHost(std::string *why)
{
    mkdir(SshFolder().c_str(), 0700);
    if (fSession == nullptr || ssh_session_update_known_hosts(fSession) != SSH_OK) {
        *why = "The host key cannot be added to the known hosts: " + LastError();
        return B_ERROR;
    }
    return B_OK;
}

bool SshSession::AuthenticateWithAgent()
{
    if (fSession == nullptr || getenv("SSH_AUTH_SOCK") == nullptr)
        return false;
    fAuthenticated = ssh_userauth_agent(fSession, nullptr) == SSH_AUTH_SUCCESS;
    return fAuthenticated;
}

bool SshSession::AuthenticateWithKeys(const PassphrasePrompt &passphrase)
{
    if (fSession == nullptr)
        return false;
    for (const char *name : kKeyFiles) {
        const std::string path = SshFolder() + "/" + name;
        if (access(path.c_str(), R_OK) != 0)
            continue;
        ssh_key key = nullptr;
        if (ssh_pki_import_privkey_file(path.c_str(), nullptr, nullptr, nullptr, &key) != SSH_OK) {
            // Encrypted, most likely: only the user can open it.
            std::optional<std::string> secret = passphrase ? passphrase(path) : std::nullopt;
            if (!secret)
                continue;
            const int imported = ssh_pki_import_privkey_file(path.c_str(),
                                                             secret->c_str(),
                                                             nullptr,
                                                             nullptr,
                                                             &key);
            std::fill(secret->begin(), secret->end(), '\0');
            if (imported != SSH_OK)
                continue;
        }
        fAuthenticated = ssh_userauth_publickey(fSession, nullptr, key) == SSH_AUTH_SUCCESS;
        ssh_key_free(key);
        if (fAuthenticated)
            return true;
    }
    return false;
}

bool SshSession::AuthenticateWithPassword(const std::string &password)
{
    if (fSession == nullptr)
        return false;
    fAuthenticated = ssh_userauth_password(fSession, nullptr, password.c_str()) == SSH_AUTH_SUCCESS;
    return fAuthenticated;
}

std::string SshSession::LastError() const
{
    return fSession != nullptr ? ssh_get_error(fSession) : "";
}

bool SshSession::IsConnected() const
{
    return fSession != nullptr && ssh_is_connected(fSession) != 0;
}

void SshSession::Disconnect()
{
    if (fSession != nullptr) {
        ssh_disconnect(fSession);
        ssh_free(fSession);
        fSession = nullptr;
    }
    fSocket.reset();
    fAuthenticated = false;
}

} // namespace platform
