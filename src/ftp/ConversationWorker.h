#pragma once

#include "platform/SocketInterrupt.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace kestrin {

// What a pane's conversation with a server (FTP, SFTP) and the worker
// thread that talks to the server share: the one request waiting to run,
// which a newer one replaces; the interrupt that cuts the running one short
// at once; and the worker's loop, which runs requests one at a time and
// keeps an idle connection alive.
//
// `Client` is the object that talks to the server, on the worker:
// `Result Run(const Request &, const std::function<void()> &connected)`,
// `bool LoggedIn()`, `void KeepAlive()`, `void ConnectionLost()`.
template<typename Client, typename Request, typename Result>
class ConversationWorker
{
public:
    // On the worker, once a request is done (to make rows there).
    using Prepare = std::function<void(Result &)>;
    // On the GUI thread, with the result, when the request was not replaced.
    using Done = std::function<void(Result &)>;
    // How the worker hands the GUI thread what it has to tell.
    using Connected = std::function<void(uint64_t id)>;
    using Deliver = std::function<void(uint64_t id, std::shared_ptr<Result>, Done)>;

    // GUI thread: `request` replaces any waiting one and cuts a running one short.
    void Submit(uint64_t id, Request request, Prepare prepare, Done done)
    {
        std::lock_guard<std::mutex> hold(fLock);
        fPending = Job{id, std::move(request), std::move(prepare), std::move(done)};
        if (fBusy)
            fInterrupt.Trigger();
        fWake.notify_one();
    }

    // GUI thread: the worker ends once what it does is cut short.
    void Quit()
    {
        std::lock_guard<std::mutex> hold(fLock);
        fQuit = true;
        fPending.reset();
        if (fBusy)
            fInterrupt.Trigger();
        fWake.notify_one();
    }

    // The worker's sockets belong to this, from the worker's Scope on.
    platform::SocketInterrupt *Interrupt() { return &fInterrupt; }

    // Worker: runs the requests until Quit.
    void Serve(Client &client,
               std::chrono::milliseconds keepAlive,
               const Connected &connected,
               const Deliver &deliver)
    {
        std::unique_lock<std::mutex> hold(fLock);
        for (;;) {
            const bool woken = fWake.wait_for(hold, keepAlive, [&] { return fPending || fQuit; });
            if (!woken)
                KeepAlive(client, hold);
            else if (fPending)
                RunJob(client, hold, connected, deliver);
            else
                break;
        }
    }

private:
    struct Job
    {
        uint64_t id = 0;
        Request request;
        Prepare prepare;
        Done done;
    };

    // With `hold` locked on entry and on return.
    void RunJob(Client &client,
                std::unique_lock<std::mutex> &hold,
                const Connected &connected,
                const Deliver &deliver)
    {
        Job job = std::move(*fPending);
        fPending.reset();
        fBusy = true;
        hold.unlock();

        auto result = std::make_shared<Result>(client.Run(job.request, [&] { connected(job.id); }));
        if (!fInterrupt.Triggered() && job.prepare)
            job.prepare(*result);

        hold.lock();
        fBusy = false;
        if (fInterrupt.Triggered()) {
            fInterrupt.Reset();
            client.ConnectionLost();
        } else {
            deliver(job.id, result, std::move(job.done));
        }
    }

    void KeepAlive(Client &client, std::unique_lock<std::mutex> &hold)
    {
        if (!client.LoggedIn())
            return;
        // Busy as for a request: one that comes meanwhile cuts the keep-alive
        // short rather than wait behind a server that fell silent.
        fBusy = true;
        hold.unlock();
        client.KeepAlive();
        hold.lock();
        fBusy = false;
        if (fInterrupt.Triggered()) {
            fInterrupt.Reset();
            client.ConnectionLost();
        }
    }

    std::mutex fLock;
    std::condition_variable fWake;
    std::optional<Job> fPending; // guarded by fLock
    bool fBusy = false;          // guarded by fLock
    bool fQuit = false;          // guarded by fLock
    platform::SocketInterrupt fInterrupt;
};

} // namespace kestrin
