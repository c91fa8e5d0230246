#include "sftp/SftpConversation.h"

#include "platform/SocketInterrupt.h"

namespace kestrin {

SftpConversation::SftpConversation(FtpSession session,
                                   SftpFolderClient::Questions questions,
                                   unsigned timeoutMs,
                                   std::chrono::milliseconds keepAlive)
    : ServerConversation(std::move(session), "sftp")
    , fWorker(std::make_shared<Worker>())
{
    StartWork([worker = fWorker,
               session = Session(),
               questions = std::move(questions),
               timeoutMs,
               keepAlive](const Post &post) {
        platform::SocketInterrupt::Scope scope(worker->Interrupt());
        FtpSession login = session;
        // Read before the first login, which then tries it rather than ask.
        if (login.passwordInKeyring)
            login.pass = KeyringPassword(login, post);
        SftpFolderClient client(std::move(login), timeoutMs, questions, LogThrough(post));
        Serve(*worker, client, keepAlive, post, &SftpConversation::Deliver);
    });
}

SftpConversation::~SftpConversation()
{
    StopWork();
    fWorker->Quit();
}

void SftpConversation::Submit(SftpRequest request, Prepare prepare, Done done)
{
    const uint64_t id = Number(request.step == SftpRequest::Step::Connect);
    fWorker->Submit(id, std::move(request), std::move(prepare), std::move(done));
}

void SftpConversation::Deliver(uint64_t id, SftpResult &result, const Done &done)
{
    if (!IsNewest(id))
        return;
    Answered(result.connectError.empty() ? std::string() : "sftp: " + result.connectError, [&] {
        if (done)
            done(result);
    });
}

} // namespace kestrin
