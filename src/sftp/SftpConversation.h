#pragma once

#include "ftp/ConversationWorker.h"
#include "ftp/ServerConversation.h"
#include "sftp/SftpFolderClient.h"
#include "sftp/SftpRequest.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace kestrin {

// A pane's conversation with its SFTP server, as FtpConversation is with an
// FTP one: one SftpFolderClient on a worker thread of its own runs the
// pane's requests one at a time, a newer request cuts the running one short
// at once, an idle connection is kept alive, and the log lines and results
// arrive on the GUI thread. What the login asks the user it asks through
// `questions` from the worker, which waits for the answer. A session whose
// password is in the desktop keyring has it read there by the worker before
// its first login, which tries it before asking; the session then holds it,
// for the transfers that log in on their own.
//
// Made and used on the GUI thread. Destroying it cuts a request short;
// nothing waits for the worker.
class SftpConversation : public ServerConversation
{
public:
    using Prepare = std::function<void(SftpResult &)>;
    using Done = std::function<void(SftpResult &)>;
    static constexpr std::chrono::milliseconds kKeepAlive{60000};

    SftpConversation(FtpSession session,
                     SftpFolderClient::Questions questions,
                     unsigned timeoutMs = 60000,
                     std::chrono::milliseconds keepAlive = kKeepAlive);
    ~SftpConversation() override;

    void Submit(SftpRequest request, Prepare prepare, Done done);

private:
    using Worker = ConversationWorker<SftpFolderClient, SftpRequest, SftpResult>;

    void Deliver(uint64_t id, SftpResult &result, const Done &done);

    std::shared_ptr<Worker> fWorker;
};

} // namespace kestrin
