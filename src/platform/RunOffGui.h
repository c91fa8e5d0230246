#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <functional>
#include <thread>
#include <utility>

namespace platform {

// Runs `work` on a thread of its own and hands what it returns to `done` on
// the GUI thread, unless `receiver` is gone by then: a window closed while
// its question is out drops the answer. Nothing waits for the thread; work
// that cannot be cut short (a call on the session bus) runs to its end.
template<typename T>
void RunOffGui(QObject *receiver, std::function<T()> work, std::function<void(T)> done)
{
    QPointer<QObject> guard(receiver);
    std::thread([guard, work = std::move(work), done = std::move(done)]() mutable {
        T answer = work();
        QCoreApplication *app = QCoreApplication::instance();
        if (app == nullptr)
            return;
        // Posted to the application object, which outlives every window;
        // the receiver is looked at only on the GUI thread.
        QMetaObject::invokeMethod(
            app,
            [guard, done = std::move(done), answer = std::move(answer)]() mutable {
                if (guard)
                    done(std::move(answer));
            },
            Qt::QueuedConnection);
    }).detach();
}

} // namespace platform
