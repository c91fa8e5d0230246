#pragma once

#include "ftp/FtpSession.h"
#include "platform/SftpChannel.h"
#include "platform/SshSession.h"
#include "sftp/SftpRequest.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kestrin {

// The part of a pane's SFTP conversation that talks to the server: one SSH
// session, logged in once and kept, that takes a request's step and lists
// the folder it leads to. Lives on the conversation's worker; what it must
// ask the user (trust a new host key, a key's passphrase, a password) it
// asks through the questions it is given, which wait for the answer.
class SftpFolderClient
{
public:
    struct Questions
    {
        // An unknown host's key: true to trust it (it is then added to
        // known_hosts). Unset: never trusted.
        std::function<bool(const platform::SshHostKey &)> trustHost;
        // The passphrase of a key file; nullopt skips the key.
        platform::SshSession::PassphrasePrompt passphrase;
        // The password, when the session holds none and no key let the
        // user in; nullopt gives up.
        std::function<std::optional<std::string>()> password;
        // Told why a host whose key changed is refused.
        std::function<void(const std::string &why)> warnChanged;
    };
    using LogLine = std::function<void(const std::string &)>;

    SftpFolderClient(FtpSession session, unsigned timeoutMs, Questions questions, LogLine log);
    ~SftpFolderClient();

    // Logs in first when not logged in (or for a Connect step), telling
    // `connected` once in, then runs the step and lists where it led.
    SftpResult Run(const SftpRequest &request, const std::function<void()> &connected = nullptr);
    // For an idle connection: one round trip, so that nothing on the way
    // ends it for idleness; one found gone is made again by the next request.
    void KeepAlive();
    bool LoggedIn() const { return fChannel != nullptr; }
    // The connection was cut under a request: the next one logs in again.
    void ConnectionLost();
    // Logs in anew (a transfer's own connection, or one that was lost):
    // empty, or why it failed. The channel is then Channel().
    std::string Login();
    platform::SftpChannel *Channel() const { return fChannel.get(); }

private:
    std::string CheckHost();
    bool Authenticate();
    // The step, then the listing of where it led; the listing's status.
    status_t StepAndList(const SftpRequest &request, SftpResult &result);
    // Empty, or why the step failed; `folder` is where it leads.
    std::string Step(const SftpRequest &request, std::string *folder);
    std::string Remove(const std::string &path, bool isFolder, int depth);
    // The absolute path of the folder `path` names, links resolved; false
    // when it is none, with the channel's Error() saying why.
    bool Resolve(const std::string &path, std::string *folder);
    std::string Log(const std::string &line) const;

    FtpSession fSession;
    unsigned fTimeoutMs;
    Questions fQuestions;
    LogLine fLog;
    std::unique_ptr<platform::SshSession> fSsh;
    std::unique_ptr<platform::SftpChannel> fChannel;
};

} // namespace kestrin
