#include "platform/Handler.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

class RecordingHandler : public platform::Handler
{
public:
    void MessageReceived(platform::Message &message) override
    {
        whats.push_back(message.what);
        threads.push_back(QThread::currentThread());
    }

    std::vector<uint32_t> whats;
    std::vector<QThread *> threads;
};

} // namespace

TEST(Handler, DispatchIsImmediatePostsArriveOnTheGuiThreadInOrder)
{
    RecordingHandler handler;
    platform::Message message(1);
    handler.Dispatch(message);
    ASSERT_EQ(handler.whats.size(), 1u);
    ASSERT_EQ(handler.Post(platform::Message(2)), B_OK);
    EXPECT_EQ(handler.whats.size(), 1u) << "a post must not be delivered inside Post()";

    std::thread worker([&] {
        for (uint32_t what = 3; what <= 50; what++)
            handler.Post(platform::Message(what));
    });
    worker.join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return handler.whats.size() == 50; }));
    for (uint32_t i = 0; i < 50; i++)
        EXPECT_EQ(handler.whats[i], i + 1);
    for (QThread *thread : handler.threads)
        EXPECT_EQ(thread, QCoreApplication::instance()->thread());
}

TEST(Handler, MessagesToAHandlerThatIsGoneAreDropped)
{
    RecordingHandler survivor;
    {
        RecordingHandler doomed;
        doomed.Post(platform::Message(1));
    }
    survivor.Post(platform::Message(2));
    // Delivery of the survivor's message means the doomed one was processed too.
    ASSERT_TRUE(QTest::qWaitFor([&] { return survivor.whats.size() == 1; }));
}
