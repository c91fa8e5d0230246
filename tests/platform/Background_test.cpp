#include "platform/Background.h"
#include "support/Gate.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <QThreadPool>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

using platform::Background;

// What the work returns reaches the GUI thread; a receiver that is gone, or
// work that was stopped, hears nothing, and the work sees its stop flag.
TEST(Background, DeliversOnTheGuiThreadOnlyToReceiversStillThereAndNotStopped)
{
    struct Case
    {
        const char *what;
        bool deleteReceiver;
        bool stop;
        bool delivered;
    };
    for (const Case &each : {Case{"kept", false, false, true},
                             Case{"receiver gone", true, false, false},
                             Case{"stopped", false, true, false}}) {
        SCOPED_TRACE(each.what);
        auto receiver = std::make_unique<QObject>();
        auto gate = std::make_shared<Gate>();
        auto sawStop = std::make_shared<std::atomic<bool>>(false);
        auto done = std::make_shared<std::atomic<bool>>(false);
        QThread *deliveredOn = nullptr;
        int delivered = 0;
        const Background::Task task = Background::Run(
            receiver.get(),
            [gate, sawStop, done](const std::atomic<bool> &stop) {
                gate->Pass();
                *sawStop = stop.load();
                *done = true;
                return 42;
            },
            [&](int answer) {
                EXPECT_EQ(answer, 42);
                deliveredOn = QThread::currentThread();
                delivered++;
            });
        if (each.deleteReceiver)
            receiver.reset();
        if (each.stop)
            task.Stop();
        gate->Open();
        task.Wait();
        EXPECT_TRUE(*done);
        EXPECT_EQ(*sawStop, each.stop);
        // The delivery was posted before the work ended: it runs now, or never.
        QCoreApplication::processEvents();
        EXPECT_EQ(delivered, each.delivered ? 1 : 0);
        if (each.delivered)
            EXPECT_EQ(deliveredOn, QCoreApplication::instance()->thread());
    }
}

// Work that waits has a thread of its own: with every worker of the pool
// busy, it still runs, and what it posts as it goes arrives in order.
TEST(Background, WorkThatWaitsKeepsNoWorkerOfThePool)
{
    Gate poolGate;
    const int workers = QThreadPool::globalInstance()->maxThreadCount();
    std::vector<Background::Task> busy;
    for (int i = 0; i < workers; i++)
        busy.push_back(
            Background::Start(nullptr, [&poolGate](const Background::Task &) { poolGate.Pass(); }));
    std::vector<int> heard;
    const Background::Task own = Background::Start(
        nullptr,
        [&heard](const Background::Task &task) {
            for (int i = 1; i <= 3; i++)
                task.Post([&heard, i] { heard.push_back(i); });
        },
        Background::Thread::Own);
    EXPECT_TRUE(QTest::qWaitFor([&] { return heard.size() == 3; }, 10000));
    EXPECT_EQ(heard, (std::vector<int>{1, 2, 3}));
    poolGate.Open();
    for (const Background::Task &task : busy)
        task.Wait();
    // A task that never ran has nothing to wait for.
    Background::Task().Wait();
}
