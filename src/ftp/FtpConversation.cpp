#include "ftp/FtpConversation.h"

#include "ftp/FtpFolderClient.h"
#include "ftp/FtpTls.h"
#include "platform/SocketInterrupt.h"

namespace kestrin {

namespace {

constexpr int kLoginRefused = 530;

// The status a login that failed with `code` leaves; empty for none.
std::string StatusOf(int code)
{
    if (code == kLoginRefused)
        return "ftp: Bad username or password.";
    if (code == FtpTls::kNotOffered)
        return "ftp: No TLS on the server; the session requires it.";
    if (code == FtpTls::kFailed)
        return "ftp: TLS failed.";
    if (code == FtpTls::kCertificateRefused)
        return "ftp: The server's certificate was not accepted.";
    if (code != 0)
        return "ftp: Failed to connect.  Please check you internet connection";
    return {};
}

} // namespace

FtpConversation::FtpConversation(FtpSession session,
                                 unsigned timeoutMs,
                                 std::chrono::milliseconds keepAlive)
    : ServerConversation(std::move(session), "ftp")
    , fWorker(std::make_shared<Worker>())
{
    StartWork([worker = fWorker, session = Session(), timeoutMs, keepAlive](const Post &post) {
        Work(worker, session, timeoutMs, keepAlive, post);
    });
}

FtpConversation::~FtpConversation()
{
    StopWork();
    // A request under way is cut short; an idle connection is closed with
    // QUIT on the worker, which nobody waits for.
    fWorker->Quit();
}

void FtpConversation::Submit(FtpRequest request, Prepare prepare, Done done)
{
    const uint64_t id = Number(request.step == FtpRequest::Step::Connect);
    fWorker->Submit(id, std::move(request), std::move(prepare), std::move(done));
}

void FtpConversation::Deliver(uint64_t id, FtpResult &result, const Done &done)
{
    if (!IsNewest(id))
        return;
    fInClear = result.inClear;
    Answered(StatusOf(result.connectCode), [&] {
        if (done)
            done(result);
    });
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
    FtpFolderClient client(std::move(session), timeoutMs, LogThrough(post));
    Serve(*worker, client, keepAlive, post, &FtpConversation::Deliver);
    client.Quit();
}

} // namespace kestrin
