#pragma once

#include "ftp/ConversationWorker.h"
#include "ftp/FtpSession.h"
#include "platform/Background.h"
#include "sftp/SftpFolderClient.h"
#include "sftp/SftpRequest.h"

#include <QObject>
#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kestrin {

// A pane's conversation with its SFTP server, as FtpConversation is with an
// FTP one: one SftpFolderClient on a worker thread of its own runs the
// pane's requests one at a time, a newer request cuts the running one short
// at once, an idle connection is kept alive, and the log lines and results
// arrive on the GUI thread. What the login asks the user it asks through
// `questions` from the worker, which waits for the answer.
//
// Made and used on the GUI thread. Destroying it cuts a request short;
// nothing waits for the worker.
class SftpConversation : public QObject
{
    Q_OBJECT

public:
    using Prepare = std::function<void(SftpResult &)>;
    using Done = std::function<void(SftpResult &)>;
    static constexpr std::chrono::milliseconds kKeepAlive{60000};

    SftpConversation(FtpSession session,
                     SftpFolderClient::Questions questions,
                     unsigned timeoutMs = 60000,
                     std::chrono::milliseconds keepAlive = kKeepAlive);
    ~SftpConversation() override;

    const FtpSession &Session() const { return fSession; }
    // "sftp: Connecting...", "sftp: Connected!", or why connecting failed;
    // empty once a folder is listed.
    const std::string &Status() const { return fStatus; }
    void Submit(SftpRequest request, Prepare prepare, Done done);

signals:
    void LogLine(const QString &text);
    // The status changed, or a request was answered (after its Done).
    void Changed();

private:
    using Worker = ConversationWorker<SftpFolderClient, SftpRequest, SftpResult>;
    using Call = std::function<void(SftpConversation &)>;
    using Post = std::function<void(Call)>;

    static void Work(const std::shared_ptr<Worker> &worker,
                     SftpFolderClient &client,
                     std::chrono::milliseconds keepAlive,
                     const Post &post);
    void Connected(uint64_t id);
    void Deliver(uint64_t id, SftpResult &result, const Done &done);
    void SetStatus(const std::string &status);

    FtpSession fSession;
    std::shared_ptr<Worker> fWorker;
    platform::Background::Task fWork;
    std::string fStatus;
    uint64_t fLatest = 0;
};

} // namespace kestrin
