#include "ftp/FtpConversation.h"

#include "ftp/FtpFolderClient.h"
#include "ftp/FtpTls.h"
#include "ftp/SessionPassword.h"
#include "platform/SocketInterrupt.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace kestrin {

namespace {

constexpr int kLoginRefused = 530;

} // namespace

// What the GUI thread and the worker share.
struct FtpConversation::Shared
{
    struct Job
    {
        uint64_t id = 0;
        FtpRequest request;
        Prepare prepare;
        Done done;
    };

    std::mutex lock;
    std::condition_variable wake;
    std::optional<Job> pending; // guarded by lock
    bool busy = false;          // guarded by lock
    bool quit = false;          // guarded by lock
    platform::SocketInterrupt interrupt;
};

FtpConversation::FtpConversation(FtpSession session,
                                 unsigned timeoutMs,
                                 std::chrono::milliseconds keepAlive)
    : fSession(std::move(session))
    , fShared(std::make_shared<Shared>())
{
    // A thread of its own, which waits on the server as long as it takes;
    // what it posts reaches the conversation only while it lives.
    fWork = platform::Background::Start(
        this,
        [shared = fShared, session = fSession, timeoutMs, keepAlive, self = this](
            const platform::Background::Task &task) {
            Work(shared, session, timeoutMs, keepAlive, [&task, self](Call call) {
                task.Post([self, call = std::move(call)] { call(*self); });
            });
        },
        platform::Background::Thread::Own);
}

FtpConversation::~FtpConversation()
{
    fWork.Stop();
    std::lock_guard<std::mutex> hold(fShared->lock);
    fShared->quit = true;
    fShared->pending.reset();
    // A request under way is cut short; an idle connection is closed with
    // QUIT on the worker, which nobody waits for.
    if (fShared->busy)
        fShared->interrupt.Trigger();
    fShared->wake.notify_one();
}

void FtpConversation::Submit(FtpRequest request, Prepare prepare, Done done)
{
    const uint64_t id = ++fLatest;
    if (request.step == FtpRequest::Step::Connect)
        SetStatus("ftp: Connecting...");
    std::lock_guard<std::mutex> hold(fShared->lock);
    fShared->pending = Shared::Job{id, std::move(request), std::move(prepare), std::move(done)};
    if (fShared->busy)
        fShared->interrupt.Trigger();
    fShared->wake.notify_one();
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

void FtpConversation::Work(std::shared_ptr<Shared> shared,
                           FtpSession session,
                           unsigned timeoutMs,
                           std::chrono::milliseconds keepAlive,
                           const Post &post)
{
    platform::SocketInterrupt::Scope scope(&shared->interrupt);
    if (session.passwordInKeyring)
        session.pass = KeyringPassword(session, post);
    FtpFolderClient client(std::move(session), timeoutMs, [&post](const std::string &line) {
        post([text = QString::fromStdString(line)](FtpConversation &conversation) {
            emit conversation.LogLine(text);
        });
    });
    std::unique_lock<std::mutex> hold(shared->lock);
    for (;;) {
        const bool woken = shared->wake.wait_for(hold, keepAlive, [&] {
            return shared->pending || shared->quit;
        });
        if (!woken)
            KeepAlive(*shared, client, hold);
        else if (shared->pending)
            RunJob(shared, client, hold, post);
        else
            break;
    }
    hold.unlock();
    client.Quit();
}

void FtpConversation::RunJob(const std::shared_ptr<Shared> &shared,
                             FtpFolderClient &client,
                             std::unique_lock<std::mutex> &hold,
                             const Post &post)
{
    Shared::Job job = std::move(*shared->pending);
    shared->pending.reset();
    shared->busy = true;
    hold.unlock();

    auto result = std::make_shared<FtpResult>(client.Run(job.request, [&] {
        post([id = job.id](FtpConversation &conversation) { conversation.Connected(id); });
    }));
    const bool cut = shared->interrupt.Triggered();
    if (!cut && job.prepare)
        job.prepare(*result);

    hold.lock();
    shared->busy = false;
    if (shared->interrupt.Triggered()) {
        shared->interrupt.Reset();
        client.ConnectionLost();
    } else {
        post([id = job.id, result, done = std::move(job.done)](FtpConversation &conversation) {
            conversation.Deliver(id, *result, done);
        });
    }
}

void FtpConversation::KeepAlive(Shared &shared,
                                FtpFolderClient &client,
                                std::unique_lock<std::mutex> &hold)
{
    if (!client.LoggedIn())
        return;
    // Busy as for a request: one that comes meanwhile cuts the NOOP short
    // rather than wait behind a server that fell silent.
    shared.busy = true;
    hold.unlock();
    client.KeepAlive();
    hold.lock();
    shared.busy = false;
    if (shared.interrupt.Triggered()) {
        shared.interrupt.Reset();
        client.ConnectionLost();
    }
}

} // namespace kestrin
