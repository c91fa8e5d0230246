#pragma once

#include "ftp/FtpRequest.h"
#include "ftp/FtpSession.h"

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kestrin {

// A pane's conversation with its FTP server. One client, on a worker thread
// of its own, runs the pane's requests one at a time (log in, change folder,
// make, delete, list); the window never waits on the server. A newer request
// cancels the one running at once (its sockets are shut down, without
// waiting for the time-out) and the connection is made again for the newer
// one. The client's log lines and each request's result arrive on the GUI
// thread.
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

    explicit FtpConversation(FtpSession session, unsigned timeoutMs = 60000);
    ~FtpConversation() override;

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
    struct Shared;
    static void Work(std::shared_ptr<Shared> shared, FtpSession session, unsigned timeoutMs);
    void Connected(uint64_t id);
    void Deliver(uint64_t id, FtpResult &result, const Done &done);
    void SetStatus(const std::string &status);

    FtpSession fSession;
    std::shared_ptr<Shared> fShared;
    std::string fStatus;
    bool fInClear = false;
    uint64_t fLatest = 0;
};

} // namespace kestrin
