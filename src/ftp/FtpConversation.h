#pragma once

#include "ftp/ConversationWorker.h"
#include "ftp/FtpRequest.h"
#include "ftp/FtpSession.h"
#include "platform/Background.h"

#include <QObject>
#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace kestrin {

class FtpFolderClient;

// A pane's conversation with its FTP server. One client, on a worker thread
// of its own, runs the pane's requests one at a time (log in, change folder,
// make, delete, list); the window never waits on the server. A newer request
// cancels the one running at once (its sockets are shut down, without
// waiting for the time-out) and the connection is made again for the newer
// one. The client's log lines and each request's result arrive on the GUI
// thread. A session whose password is in the desktop keyring has it read
// there by the worker before its first login; the session then holds it,
// for the transfers that log in on their own.
//
// While no request comes, the worker keeps the connection: NOOP after each
// `keepAlive` of quiet, well within the idle time-outs of servers (IIS ends
// idle sessions after two minutes, vsftpd after five), and a connection the
// server ended all the same is made again at once.
//
// Made and used on the GUI thread. Destroying it sends QUIT on the worker,
// or cuts a request short; nothing waits for either.
class FtpConversation : public QObject
{
    Q_OBJECT

public:
    // Runs on the worker once the request is done (to make rows of its
    // listing there), then `Done` on the GUI thread. Neither runs for a
    // request that a newer one replaced.
    using Prepare = std::function<void(FtpResult &)>;
    using Done = std::function<void(FtpResult &)>;

    static constexpr std::chrono::milliseconds kKeepAlive{60000};

    explicit FtpConversation(FtpSession session,
                             unsigned timeoutMs = 60000,
                             std::chrono::milliseconds keepAlive = kKeepAlive);
    ~FtpConversation() override;

    // The session; its password is empty until the keyring's has arrived.
    const FtpSession &Session() const { return fSession; }
    // "ftp: Connecting...", "ftp: Connected!", or why connecting failed;
    // empty once a folder is listed.
    const std::string &Status() const { return fStatus; }
    // The server refused TLS, and the conversation goes in clear.
    bool InClear() const { return fInClear; }

    void Submit(FtpRequest request, Prepare prepare, Done done);

signals:
    // One line of the client's log: a command as sent, a reply, an error.
    void LogLine(const QString &text);
    // The status changed, or a request was answered (after its Done).
    void Changed();

private:
    using Worker = ConversationWorker<FtpFolderClient, FtpRequest, FtpResult>;
    // What the worker hands to the GUI thread, and how it hands it.
    using Call = std::function<void(FtpConversation &)>;
    using Post = std::function<void(Call)>;

    static void Work(std::shared_ptr<Worker> worker,
                     FtpSession session,
                     unsigned timeoutMs,
                     std::chrono::milliseconds keepAlive,
                     const Post &post);
    // On the worker: the password the keyring keeps for `session`, handed to
    // the GUI thread too; empty, with a line in the log saying why, when it
    // could not be had.
    static std::string KeyringPassword(const FtpSession &session, const Post &post);
    void Connected(uint64_t id);
    void Deliver(uint64_t id, FtpResult &result, const Done &done);
    void SetStatus(const std::string &status);

    FtpSession fSession;
    std::shared_ptr<Worker> fWorker;
    platform::Background::Task fWork;
    std::string fStatus;
    bool fInClear = false;
    uint64_t fLatest = 0;
};

} // namespace kestrin
