#include "ftp/FtpConversation.h"

#include "ftp/FtpFolderClient.h"
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

FtpConversation::FtpConversation(FtpSession session, unsigned timeoutMs)
    : fSession(std::move(session))
    , fShared(std::make_shared<Shared>())
{
    // A thread of its own, which waits on the server as long as it takes;
    // what it posts reaches the conversation only while it lives.
    fWork = platform::Background::Start(
        this,
        [shared = fShared, session = fSession, timeoutMs, self = this](
            const platform::Background::Task &task) {
            Work(shared, session, timeoutMs, [&task, self](Call call) {
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
    if (result.connectCode == kLoginRefused)
        fStatus = "ftp: Bad username or password.";
    else if (result.connectCode != 0)
        fStatus = "ftp: Failed to connect.  Please check you internet connection";
    else
        fStatus.clear();
    if (done)
        done(result);
    // The folder a place reached is known only now.
    emit Changed();
}

void FtpConversation::Work(std::shared_ptr<Shared> shared,
                           FtpSession session,
                           unsigned timeoutMs,
                           const std::function<void(Call)> &post)
{
    platform::SocketInterrupt::Scope scope(&shared->interrupt);
    FtpFolderClient client(std::move(session), timeoutMs, [&post](const std::string &line) {
        post([text = QString::fromStdString(line)](FtpConversation &conversation) {
            emit conversation.LogLine(text);
        });
    });
    std::unique_lock<std::mutex> hold(shared->lock);
    for (;;) {
        shared->wake.wait(hold, [&] { return shared->pending || shared->quit; });
        if (!shared->pending)
            break;
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
    hold.unlock();
    client.Quit();
}

} // namespace kestrin
