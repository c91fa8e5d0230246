#include "platform/Background.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace platform {

struct Background::Task::State
{
    std::atomic<bool> stop{false};
    // Set on the GUI thread when the work starts, read only there: the
    // receiver is destroyed on the GUI thread too.
    QPointer<QObject> receiver;
    bool forApplication = false;

    std::mutex lock;
    std::condition_variable ended;
    bool finished = false; // guarded by lock
};

Background::Task::Task()
    : Task(nullptr)
{
    // Nothing runs: nothing to wait for.
    fState->finished = true;
}

Background::Task::Task(QObject *receiver)
    : fState(std::make_shared<State>())
{
    fState->receiver = receiver;
    fState->forApplication = receiver == nullptr;
}

void Background::Task::Stop() const
{
    fState->stop = true;
}

const std::atomic<bool> &Background::Task::Flag() const
{
    return fState->stop;
}

void Background::Task::Wait() const
{
    std::unique_lock<std::mutex> hold(fState->lock);
    fState->ended.wait(hold, [this] { return fState->finished; });
}

void Background::Task::Finished() const
{
    std::lock_guard<std::mutex> hold(fState->lock);
    fState->finished = true;
    fState->ended.notify_all();
}

void Background::Task::Post(std::function<void()> call) const
{
    QCoreApplication *application = QCoreApplication::instance();
    if (application == nullptr || Stopping())
        return;
    // Through the application, which outlives every receiver: the receiver
    // itself may be going while this is posted.
    QMetaObject::invokeMethod(
        application,
        [state = fState, call = std::move(call)] {
            if (!state->stop && (state->forApplication || state->receiver))
                call();
        },
        Qt::QueuedConnection);
}

Background::Task Background::Start(QObject *receiver,
                                   std::function<void(const Task &)> work,
                                   Thread thread)
{
    Task task(receiver);
    Launch(
        task, [task, work = std::move(work)] { work(task); }, thread);
    return task;
}

void Background::Launch(const Task &task, std::function<void()> body, Thread thread)
{
    auto run = [task, body = std::move(body)] {
        body();
        task.Finished();
    };
    if (thread == Thread::Own)
        std::thread(std::move(run)).detach();
    else
        QThreadPool::globalInstance()->start(std::move(run));
}

} // namespace platform
