#include "platform/AlertRecorder.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <atomic>
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

namespace {

// Presses button `index` of the message box that is about to be shown.
void PressWhenShown(int index, std::atomic<bool> *pressed)
{
    QTimer::singleShot(0, [index, pressed] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<QMessageBox *>(widget);
            if (box && box->isVisible()) {
                const auto buttons = box->findChildren<QPushButton *>();
                for (QPushButton *button : buttons) {
                    if (button->text() == QString("button %1").arg(index)) {
                        button->click();
                        *pressed = true;
                        return;
                    }
                }
            }
        }
        PressWhenShown(index, pressed);
    });
}

const Alert kThreeButtons{"Title", "Question?", {"button 0", "button 1", "button 2"}};

} // namespace

TEST(Alerts, MessageBoxReturnsThePressedButtonOnTheGuiThread)
{
    std::atomic<bool> pressed = false;
    PressWhenShown(1, &pressed);
    EXPECT_EQ(Alerts::Go(kThreeButtons), 1);
    EXPECT_TRUE(pressed);
}

TEST(Alerts, MessageBoxFromAWorkerIsShownByTheGuiThreadWhileTheWorkerWaits)
{
    std::atomic<bool> pressed = false;
    std::atomic<int> answer = -1;
    std::thread worker([&] { answer = Alerts::Go(kThreeButtons); });
    PressWhenShown(2, &pressed);
    const bool answered = QTest::qWaitFor([&] { return answer != -1; }, 10000);
    worker.join();
    ASSERT_TRUE(answered);
    EXPECT_EQ(answer, 2);
}
