#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <gtest/gtest.h>

// A timer that ticks every 15 ms on the thread that makes it (the GUI
// thread) and keeps the longest time between two ticks: how long the window
// would have stood frozen. On a loaded machine ticks come late by tens of
// milliseconds, so only kBlocked tells a thread that waited on something.
class TickGaps
{
public:
    // Far above any delay of scheduling, far below the wait of a thread
    // that blocks on a server: seconds, a time-out, or for ever.
    static constexpr qint64 kBlockedMs = 1000;

    TickGaps()
    {
        fTicks.setInterval(15);
        QObject::connect(&fTicks, &QTimer::timeout, [this] {
            const qint64 now = fClock.elapsed();
            fLongest = std::max(fLongest, now - fLast);
            fLast = now;
        });
        fClock.start();
        fTicks.start();
    }
    // The figure goes into the test's report (--gtest_output=xml), where
    // the README's table of fault drills takes it from.
    ~TickGaps() { testing::Test::RecordProperty("longest_gap_ms", int(Longest())); }
    TickGaps(const TickGaps &) = delete;
    TickGaps &operator=(const TickGaps &) = delete;

    // Includes the time since the last tick, so a block that is still going
    // on counts too.
    qint64 Longest() const { return std::max(fLongest, fClock.elapsed() - fLast); }

    // Runs `work` on a thread of its own while this thread goes on with its
    // events: what a test does to a server (killing its sessions, waiting for
    // them) is no pause of the window.
    static void OffTheWindowThread(const std::function<void()> &work)
    {
        std::future<void> done = std::async(std::launch::async, work);
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return done.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
            30000));
    }

private:
    QTimer fTicks;
    QElapsedTimer fClock;
    qint64 fLast = 0;
    qint64 fLongest = 0;
};
