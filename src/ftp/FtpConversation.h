#pragma once

#include "ftp/ConversationWorker.h"
#include "ftp/FtpRequest.h"
#include "ftp/ServerConversation.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

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
class FtpConversation : public ServerConversation
{
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

    // The server refused TLS, and the conversation goes in clear.
    bool InClear() const { return fInClear; }

    void Submit(FtpRequest request, Prepare prepare, Done done);

private:
    using Worker = ConversationWorker<FtpFolderClient, FtpRequest, FtpResult>;

    static void Work(std::shared_ptr<Worker> worker,
                     FtpSession session,
                     unsigned timeoutMs,
                     std::chrono::milliseconds keepAlive,
                     const Post &post);
    void Deliver(uint64_t id, FtpResult &result, const Done &done);

    std::shared_ptr<Worker> fWorker;
    bool fInClear = false;
};

} // namespace kestrin
