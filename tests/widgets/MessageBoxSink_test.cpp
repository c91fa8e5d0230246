#include "widgets/MessageBoxSink.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using platform::Alert;
using platform::Alerts;

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

TEST(MessageBoxSink, ReturnsThePressedButtonOnTheGuiThread)
{
    std::atomic<bool> pressed = false;
    PressWhenShown(1, &pressed);
    EXPECT_EQ(Alerts::Go(kThreeButtons), 1);
    EXPECT_TRUE(pressed);
}

TEST(MessageBoxSink, FromAWorkerIsShownByTheGuiThreadWhileTheWorkerWaits)
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
