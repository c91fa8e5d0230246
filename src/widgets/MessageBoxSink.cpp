#include "widgets/MessageBoxSink.h"

#include <QApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>
#include <algorithm>
#include <cstdio>

namespace kestrin {

using platform::Alert;

namespace {

QMessageBox::Icon IconFor(alert_type type)
{
    switch (type) {
    case B_EMPTY_ALERT:
        return QMessageBox::NoIcon;
    case B_INFO_ALERT:
    case B_IDEA_ALERT:
        return QMessageBox::Information;
    case B_WARNING_ALERT:
        return QMessageBox::Warning;
    case B_STOP_ALERT:
        return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

// BeOS alert buttons are at least 75 pixels wide unless sized to their label.
constexpr int kUsualButtonWidth = 75;

} // namespace

void MessageBoxSink::Install()
{
    static MessageBoxSink messageBoxes;
    platform::Alerts::SetSink(&messageBoxes);
}

int MessageBoxSink::Show(const Alert &alert)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!qobject_cast<QApplication *>(app)) {
        // A command-line tool has no windows to show an alert in.
        fprintf(stderr, "%s: %s\n", alert.title.c_str(), alert.text.c_str());
        return 0;
    }
    if (QThread::currentThread() == app->thread())
        return ShowOnGuiThread(alert);
    int pressed = 0;
    QMetaObject::invokeMethod(
        app, [&] { pressed = ShowOnGuiThread(alert); }, Qt::BlockingQueuedConnection);
    return pressed;
}

std::optional<std::string> MessageBoxSink::AskSecret(const Alert &alert)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!qobject_cast<QApplication *>(app))
        return AlertSink::AskSecret(alert);
    if (QThread::currentThread() == app->thread())
        return AskOnGuiThread(alert);
    std::optional<std::string> secret;
    QMetaObject::invokeMethod(
        app, [&] { secret = AskOnGuiThread(alert); }, Qt::BlockingQueuedConnection);
    return secret;
}

std::optional<std::string> MessageBoxSink::AskOnGuiThread(const Alert &alert)
{
    QInputDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(QString::fromStdString(alert.title));
    dialog.setLabelText(QString::fromStdString(alert.text));
    dialog.setTextEchoMode(QLineEdit::Password);
    if (alert.buttons.size() >= 2) {
        dialog.setCancelButtonText(QString::fromStdString(alert.buttons.front()));
        dialog.setOkButtonText(QString::fromStdString(alert.buttons.back()));
    }
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.textValue().toStdString();
}

int MessageBoxSink::ShowOnGuiThread(const Alert &alert)
{
    QMessageBox box(IconFor(alert.type),
                    QString::fromStdString(alert.title),
                    QString::fromStdString(alert.text),
                    QMessageBox::NoButton,
                    QApplication::activeWindow());
    std::vector<QPushButton *> buttons;
    for (const std::string &label : alert.buttons)
        buttons.push_back(box.addButton(QString::fromStdString(label), QMessageBox::ActionRole));
    if (buttons.empty())
        buttons.push_back(box.addButton(QMessageBox::Ok));

    int widest = 0;
    for (QPushButton *button : buttons)
        widest = std::max(widest, button->sizeHint().width());
    for (QPushButton *button : buttons) {
        if (alert.width == B_WIDTH_AS_USUAL)
            button->setMinimumWidth(std::max(kUsualButtonWidth, button->sizeHint().width()));
        else if (alert.width == B_WIDTH_FROM_WIDEST)
            button->setMinimumWidth(widest);
    }
    // As on BeOS: Enter presses the rightmost button, Escape the leftmost.
    box.setDefaultButton(buttons.back());
    box.setEscapeButton(buttons.front());
    box.exec();

    const auto pressed = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    return pressed == buttons.end() ? 0 : int(pressed - buttons.begin());
}

} // namespace kestrin
