#include "sftp/SftpConversation.h"

#include "platform/SocketInterrupt.h"

namespace kestrin {

SftpConversation::SftpConversation(FtpSession session,
                                   SftpFolderClient::Questions questions,
                                   unsigned timeoutMs,
                                   std::chrono::milliseconds keepAlive)
    : fSession(std::move(session))
    , fWorker(std::make_shared<Worker>())
{
    fWork = platform::Background::Start(
        this,
        [worker = fWorker,
         session = fSession,
         questions = std::move(questions),
         timeoutMs,
         keepAlive,
         self = this](const platform::Background::Task &task) {
            const Post post = [&task, self](Call call) {
                task.Post([self, call = std::move(call)] { call(*self); });
            };
            platform::SocketInterrupt::Scope scope(worker->Interrupt());
            SftpFolderClient client(session, timeoutMs, questions, [&post](const std::string &line) {
                post([text = QString::fromStdString(line)](SftpConversation &conversation) {
                    emit conversation.LogLine(text);
                });
            });
            Work(worker, client, keepAlive, post);
        },
        platform::Background::Thread::Own);
}

SftpConversation::~SftpConversation()
{
    fWork.Stop();
    fWorker->Quit();
}

void SftpConversation::Work(const std::shared_ptr<Worker> &worker,
                            SftpFolderClient &client,
                            std::chrono::milliseconds keepAlive,
                            const Post &post)
{
    worker->Serve(
        client,
        keepAlive,
        [&post](uint64_t id) {
            post([id](SftpConversation &conversation) { conversation.Connected(id); });
        },
        [&post](uint64_t id, std::shared_ptr<SftpResult> result, Done done) {
            post([id, result, done = std::move(done)](SftpConversation &conversation) {
                conversation.Deliver(id, *result, done);
            });
        });
}

void SftpConversation::Submit(SftpRequest request, Prepare prepare, Done done)
{
    const uint64_t id = ++fLatest;
    if (request.step == SftpRequest::Step::Connect)
        SetStatus("sftp: Connecting...");
    fWorker->Submit(id, std::move(request), std::move(prepare), std::move(done));
}

void SftpConversation::SetStatus(const std::string &status)
{
    if (status == fStatus)
        return;
    fStatus = status;
    emit Changed();
}

void SftpConversation::Connected(uint64_t id)
{
    if (id == fLatest)
        SetStatus("sftp: Connected!");
}

void SftpConversation::Deliver(uint64_t id, SftpResult &result, const Done &done)
{
    if (id != fLatest)
        return;
    fStatus = result.connectError.empty() ? std::string() : "sftp: " + result.connectError;
    if (done)
        done(result);
    emit Changed();
}

} // namespace kestrin
