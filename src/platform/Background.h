#pragma once

#include <QObject>
#include <atomic>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace platform {

// The one way Kestrin starts work off the GUI thread. A function runs on a
// worker with a stop flag that it looks at between its steps; what it returns
// is handed to a delivery on the GUI thread afterwards, and not at all once
// the receiver (the object the delivery is for) is gone or the work was asked
// to stop. A worker reaches the GUI thread in no other way.
//
// Work that computes (a listing, a folder's total, a find, a decode) runs on
// the pool's workers, as many as the machine has cores. Work that waits (on a
// server, on a child process, on a walk of every volume) gets a thread of its
// own, so that it never keeps a worker of the pool from the listings.
//
// Started, stopped and delivered on the GUI thread; the work itself touches
// nothing of the GUI thread's but what it was given.
class Background
{
public:
    enum class Thread { Pool, Own };

    // One piece of work, as its worker and whoever started it share it.
    class Task
    {
    public:
        Task();

        // Sets the stop flag; the delivery, and whatever the work posts from
        // then on, is dropped.
        void Stop() const;
        bool Stopping() const { return Flag().load(); }
        const std::atomic<bool> &Flag() const;
        // Waits until the work has returned: for a destructor that must, once
        // it has stopped the work and cut what the work waits on (a socket, a
        // child process), so that the wait is short.
        void Wait() const;
        // Runs `call` on the GUI thread, unless the receiver is gone or the
        // work was stopped by then: for what the work reports as it goes.
        void Post(std::function<void()> call) const;

    private:
        friend class Background;
        struct State;
        explicit Task(QObject *receiver);
        void Finished() const;

        std::shared_ptr<State> fState;
    };

    // Runs `work(stop)` and hands what it returns to `deliver` on the GUI
    // thread (`deliver()` for work that returns nothing). Without a receiver
    // the delivery is for the application, which outlives every window.
    template<typename Work, typename Deliver>
    static Task Run(QObject *receiver, Work work, Deliver deliver, Thread thread = Thread::Pool)
    {
        Task task(receiver);
        Launch(
            task,
            [task, work = std::move(work), deliver = std::move(deliver)]() mutable {
                using Result = std::invoke_result_t<Work &, const std::atomic<bool> &>;
                if constexpr (std::is_void_v<Result>) {
                    work(task.Flag());
                    task.Post(std::move(deliver));
                } else {
                    auto result = std::make_shared<Result>(work(task.Flag()));
                    task.Post([deliver = std::move(deliver), result]() mutable {
                        deliver(std::move(*result));
                    });
                }
            },
            thread);
        return task;
    }

    // Runs `work(task)`, which posts what it has to tell through the task,
    // if anything.
    static Task Start(QObject *receiver,
                      std::function<void(const Task &)> work,
                      Thread thread = Thread::Pool);

private:
    static void Launch(const Task &task, std::function<void()> body, Thread thread);
};

} // namespace platform
