#pragma once

#include "ftp/FtpSession.h"
#include "platform/Background.h"

#include <QObject>
#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kestrin {

// What a pane's conversation with a server (FTP, SFTP) is, whatever the
// protocol: the session, requests numbered so that only the newest one's
// answer is delivered, a status for the pane's header ("ftp: Connecting...",
// "sftp: Connected!"), the client's log lines, and a worker thread of its
// own whose calls reach the conversation on the GUI thread while it lives.
// A kind's conversation keeps its client, its requests and what its
// results mean; ConversationWorker runs them on the worker.
//
// Made and used on the GUI thread.
class ServerConversation : public QObject
{
    Q_OBJECT

public:
    // The session; a password kept in the keyring is in it once it has come.
    const FtpSession &Session() const { return fSession; }
    // "<scheme>: Connecting...", "<scheme>: Connected!", or why connecting
    // failed; empty once a folder is listed.
    const std::string &Status() const { return fStatus; }
    // "ftp" or "sftp".
    const std::string &Scheme() const { return fScheme; }

signals:
    // One line of the client's log: a command as sent, a reply, an error.
    void LogLine(const QString &text);
    // The status changed, or a request was answered (after its Done).
    void Changed();

protected:
    // What the worker hands to the GUI thread, and how it hands it.
    using Call = std::function<void(ServerConversation &)>;
    using Post = std::function<void(Call)>;

    // `scheme` ("ftp", "sftp") begins the status texts.
    ServerConversation(FtpSession session, std::string scheme);

    // Runs `work` on a thread of its own; what it posts reaches this
    // conversation only until StopWork.
    void StartWork(std::function<void(const Post &)> work);
    void StopWork();

    // GUI thread: the number of a new request, which is the newest now. A
    // login tells so in the status.
    uint64_t Number(bool login);
    bool IsNewest(uint64_t id) const { return id == fLatest; }
    // The newest request's answer: the status it leaves (empty when all
    // went well), then `done`, then Changed.
    void Answered(const std::string &status, const std::function<void()> &done);

    // Worker: how the client's log lines reach LogLine.
    static std::function<void(const std::string &)> LogThrough(const Post &post);
    // Worker: the password the keyring keeps for `session`, handed to the
    // GUI thread's session too; empty, with a line in the log saying why,
    // when it could not be had.
    static std::string KeyringPassword(const FtpSession &session, const Post &post);

    // Worker: serves `worker`'s requests with `client` until it quits;
    // each newest answer goes to `deliver` of the kind's conversation.
    template<typename Self, typename Worker, typename Client, typename Result, typename Done>
    static void Serve(Worker &worker,
                      Client &client,
                      std::chrono::milliseconds keepAlive,
                      const Post &post,
                      void (Self::*deliver)(uint64_t, Result &, const Done &))
    {
        worker.Serve(
            client,
            keepAlive,
            [&post](uint64_t id) {
                post([id](ServerConversation &conversation) { conversation.Connected(id); });
            },
            [&post, deliver](uint64_t id, std::shared_ptr<Result> result, Done done) {
                post([id, result, done = std::move(done), deliver](ServerConversation &self) {
                    (static_cast<Self &>(self).*deliver)(id, *result, done);
                });
            });
    }

private:
    void Connected(uint64_t id);
    void SetStatus(const std::string &status);

    FtpSession fSession;
    std::string fScheme;
    platform::Background::Task fWork;
    std::string fStatus;
    uint64_t fLatest = 0;
};

} // namespace kestrin
