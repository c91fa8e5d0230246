#include "ftp/FtpConversation.h"

#include "ftp/FtpFolderClient.h"
#include "ftp/FtpTls.h"
#include "ftp/SessionPassword.h"
#include "platform/SocketInterrupt.h"

namespace kestrin {

namespace {

constexpr int kLoginRefused = 530;

} // namespace

FtpConversation::FtpConversation(FtpSession session,
                                 unsigned timeoutMs,
                                 std::chrono::milliseconds keepAlive)
    : fSession(std::move(session))
    , fWorker(std::make_shared<Worker>())
{
    // A thread of its own, which waits on the server as long as it takes;
    // what it posts reaches the conversation only while it lives.
    fWork = platform::Background::Start(
        this,
        [worker = fWorker, session = fSession, timeoutMs, keepAlive, self = this](
            const platform::Background::Task &task) {
            Work(worker, session, timeoutMs, keepAlive, [&task, self](Call call) {
                task.Post([self, call = std::move(call)] { call(*self); });
            });
        },
        platform::Background::Thread::Own);
}

FtpConversation::~FtpConversation()
{
    fWork.Stop();
    // A request under way is cut short; an idle connection is closed with
    // QUIT on the worker, which nobody waits for.
    fWorker->Quit();
}

void FtpConversation::Submit(FtpRequest request, Prepare prepare, Done done)
{
    const uint64_t id = ++fLatest;
    if (request.step == FtpRequest::Step::Connect)
        SetStatus("ftp: Connecting...");
    fWorker->Submit(id, std::move(request), std::move(prepare), std::move(done));
}

void FtpConversation::SetStatus(const std::string &status)
{
    if (status == fStatus)
        return;
    fStatus = status;
    emit Changed();
}

void FtpConversation::Connected(uint64_t id)
{
    if (id == fLatest)
        SetStatus("ftp: Connected!");
}

void FtpConversation::Deliver(uint64_t id, FtpResult &result, const Done &done)
{
    if (id != fLatest)
        return;
    fInClear = result.inClear;
    if (result.connectCode == kLoginRefused)
        fStatus = "ftp: Bad username or password.";
    else if (result.connectCode == FtpTls::kNotOffered)
        fStatus = "ftp: No TLS on the server; the session requires it.";
    else if (result.connectCode == FtpTls::kFailed)
        fStatus = "ftp: TLS failed.";
    else if (result.connectCode == FtpTls::kCertificateRefused)
        fStatus = "ftp: The server's certificate was not accepted.";
    else if (result.connectCode != 0)
        fStatus = "ftp: Failed to connect.  Please check you internet connection";
    else
        fStatus.clear();
    if (done)
        done(result);
    // The folder a place reached is known only now.
    emit Changed();
}

std::string FtpConversation::KeyringPassword(const FtpSession &session, const Post &post)
{
    const platform::Keyring::Found found = SessionPassword::Lookup(session);
    if (found.secret) {
        post([password = *found.secret](FtpConversation &conversation) {
            conversation.fSession.pass = password;
        });
        return *found.secret;
    }
    const std::string why = found.error.empty()
                                ? "The desktop keyring holds no password for this session."
                                : "Kestrin could not read the password from the desktop keyring: "
                                      + found.error;
    post([text = QString::fromStdString(why)](FtpConversation &conversation) {
        emit conversation.LogLine(text);
    });
    return {};
}

void FtpConversation::Work(std::shared_ptr<Worker> worker,
                           FtpSession session,
                           unsigned timeoutMs,
                           std::chrono::milliseconds keepAlive,
                           const Post &post)
{
    platform::SocketInterrupt::Scope scope(worker->Interrupt());
    if (session.passwordInKeyring)
        session.pass = KeyringPassword(session, post);
    FtpFolderClient client(std::move(session), timeoutMs, [&post](const std::string &line) {
        post([text = QString::fromStdString(line)](FtpConversation &conversation) {
            emit conversation.LogLine(text);
        });
    });
    worker->Serve(
        client,
        keepAlive,
        [&post](uint64_t id) {
            post([id](FtpConversation &conversation) { conversation.Connected(id); });
        },
        [&post](uint64_t id, std::shared_ptr<FtpResult> result, Done done) {
            post([id, result, done = std::move(done)](FtpConversation &conversation) {
                conversation.Deliver(id, *result, done);
            });
        });
    client.Quit();
}

} // namespace kestrin
