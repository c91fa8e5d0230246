#include "widgets/MessageBoxSink.h"

#include <QApplication>
#include <QInputDialog>
#include <QLineEdit>
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

// On the GUI thread, and from a worker that waits while the GUI thread shows it.
TEST(MessageBoxSink, ReturnsThePressedButtonOnTheGuiThreadOrToAWorker)
{
    std::atomic<bool> pressed = false;
    PressWhenShown(1, &pressed);
    EXPECT_EQ(Alerts::Go(kThreeButtons), 1);
    EXPECT_TRUE(pressed);

    std::atomic<int> answer = -1;
    std::thread worker([&] { answer = Alerts::Go(kThreeButtons); });
    PressWhenShown(2, &pressed);
    const bool answered = QTest::qWaitFor([&] { return answer != -1; }, 10000);
    worker.join();
    ASSERT_TRUE(answered);
    EXPECT_EQ(answer, 2);
}

// Types `text` into the secret's dialog once it shows (the dialog runs its
// own event loop, so this runs from a timer inside it), then confirms or
// declines.
void AnswerSecretWhenShown(const QString &text, bool confirm, QLineEdit::EchoMode *echo)
{
    QTimer::singleShot(0, [=] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *dialog = qobject_cast<QInputDialog *>(widget);
            auto *field = dialog != nullptr ? dialog->findChild<QLineEdit *>() : nullptr;
            if (field != nullptr && dialog->isVisible()) {
                *echo = field->echoMode();
                QTest::keyClicks(field, text);
                QTest::keyClick(field, confirm ? Qt::Key_Return : Qt::Key_Escape);
                return;
            }
        }
        AnswerSecretWhenShown(text, confirm, echo);
    });
}

// A secret asked from a worker: typed into a field that hides it, and given
// back only when the user confirms.
TEST(MessageBoxSink, AsksForASecretInAHiddenFieldFromAWorker)
{
    for (const bool confirm : {true, false}) {
        std::atomic<bool> done = false;
        std::optional<std::string> secret = "untouched";
        QLineEdit::EchoMode echo = QLineEdit::Normal;
        AnswerSecretWhenShown("s3cret", confirm, &echo);
        std::thread worker([&] {
            secret = Alerts::AskSecret({"Password", "The password:", {"Cancel", "Connect"}});
            done = true;
        });
        const bool answered = QTest::qWaitFor([&] { return done.load(); }, 10000);
        worker.join();
        ASSERT_TRUE(answered);
        EXPECT_EQ(echo, QLineEdit::Password);
        EXPECT_EQ(secret, confirm ? std::optional<std::string>("s3cret") : std::nullopt);
    }
}
