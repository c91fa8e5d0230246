#include "platform/AlertRecorder.h"

#include <gtest/gtest.h>
#include <thread>

using platform::Alert;
using platform::AlertRecorder;
using platform::Alerts;

TEST(Alerts, RecorderKeepsAlertsAnswersFromItsScriptAndRestoresThePreviousSink)
{
    AlertRecorder outer;
    {
        AlertRecorder inner;
        inner.QueueAnswer(2);
        const Alert alert{"Hey", "text", {"a", "b", "c"}, B_STOP_ALERT, B_WIDTH_FROM_LABEL};
        EXPECT_EQ(Alerts::Go(alert), 2);
        EXPECT_EQ(Alerts::Go(alert), 0) << "an empty script answers the first button";
        std::thread worker([&] { Alerts::Go({"From", "worker", {"OK"}}); });
        worker.join();
        ASSERT_EQ(inner.Count(), 3u);
        EXPECT_EQ(inner.Shown()[0], alert);
        EXPECT_EQ(inner.Shown()[2].title, "From");
    }
    Alerts::Go({"After", "inner", {"OK"}});
    EXPECT_EQ(outer.Count(), 1u);
}
