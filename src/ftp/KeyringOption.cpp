#include "ftp/KeyringOption.h"

#include "ftp/SessionOptions.h"
#include "ftp/SessionPassword.h"
#include "platform/Alerts.h"
#include "platform/Background.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>

namespace kestrin {

KeyringOption::KeyringOption(QFormLayout *fields, QLineEdit *password)
    : QObject(password)
    , fPassword(password)
    , fWindow(fields->parentWidget())
{
    fBox = new QCheckBox("Keep the password in the desktop keyring", fWindow);
    fBox->setObjectName("keyring");
    fBox->setEnabled(false);
    fNote = new QLabel(fWindow);
    fNote->setObjectName("keyringNote");
    fNote->setWordWrap(true);
    fNote->hide();
    // Under the password field, with no label of their own: a hidden note
    // takes no room.
    fields->addRow(static_cast<QWidget *>(nullptr), fBox);
    fields->addRow(static_cast<QWidget *>(nullptr), fNote);
    // What the user types replaces what the keyring holds, even when the
    // keyring could not be read.
    connect(fPassword, &QLineEdit::textEdited, this, [this] { fPasswordKnown = true; });
    // A call on the session bus waits for the bus: a thread of its own.
    platform::Background::Run(
        this,
        [](const std::atomic<bool> &) { return SessionPassword::Unavailable(); },
        [this](std::string why) { Available(why); },
        platform::Background::Thread::Own);
    Show();
}

void KeyringOption::Available(const std::string &whyNone)
{
    fKeyring = whyNone.empty() ? Keyring::There : Keyring::Missing;
    fWhyNone = whyNone;
    Show();
}

void KeyringOption::Load(const FtpSession &session)
{
    fBox->setChecked(session.passwordInKeyring);
    if (!session.passwordInKeyring)
        return;
    fPasswordKnown = false;
    fReading = true;
    Show();
    using Found = platform::Keyring::Found;
    platform::Background::Run(
        this,
        [session](const std::atomic<bool> &) { return SessionPassword::Lookup(session); },
        [this](Found found) { PasswordRead(found.secret.value_or(std::string()), found.error); },
        platform::Background::Thread::Own);
}

void KeyringOption::PasswordRead(const std::string &password, const std::string &error)
{
    // The field was read-only meanwhile: nothing typed is lost.
    fReading = false;
    fReadError = error;
    fPasswordKnown = error.empty();
    fPassword->setText(QString::fromStdString(password));
    Show();
}

bool KeyringOption::Chosen() const
{
    return fBox->isChecked();
}

void KeyringOption::Keep(const FtpSession &session, std::function<void()> saved)
{
    if (!Chosen()) {
        const std::string file = FtpSession::FileNameOf(session.name, session.kind);
        if (SessionOptions::Read(file).PasswordInKeyring())
            SessionPassword::ForgetLater(file);
        saved();
        return;
    }
    // Without a keyring, or without the password it keeps, there is nothing
    // to store: the session goes on keeping its password where it is.
    if (fKeyring != Keyring::There || !fPasswordKnown) {
        saved();
        return;
    }
    fSaving = true;
    Show();
    const std::string password = fPassword->text().toStdString();
    platform::Background::Run(
        this,
        [session, password](const std::atomic<bool> &) {
            return SessionPassword::Keep(session, password);
        },
        [this, saved = std::move(saved)](std::string error) {
            fSaving = false;
            Show();
            if (error.empty()) {
                saved();
                return;
            }
            platform::Alerts::Go(
                {"Keyring",
                 "Kestrin could not keep the password in the desktop keyring: " + error,
                 {"OK"},
                 B_WARNING_ALERT});
        },
        platform::Background::Thread::Own);
}

void KeyringOption::Show()
{
    fWindow->setEnabled(!fSaving);
    fBox->setEnabled(fKeyring == Keyring::There);
    fPassword->setReadOnly(fReading);
    fPassword->setPlaceholderText(fReading ? "Reading the desktop keyring..." : QString());
    QString note;
    if (fSaving)
        note = "Keeping the password in the desktop keyring...";
    else if (fKeyring == Keyring::Asking)
        note = "Looking for the desktop keyring...";
    else if (fKeyring == Keyring::Missing)
        note = QString::fromStdString(fWhyNone);
    else if (!fReadError.empty())
        note = QString::fromStdString("The desktop keyring could not be read: " + fReadError);
    fBox->setToolTip(fKeyring == Keyring::Missing ? note : QString());
    if (note == fNote->text())
        return;
    fNote->setText(note);
    fNote->setVisible(!note.isEmpty());
    FitWindow();
}

void KeyringOption::FitWindow()
{
    // The window is as tall as its rows: a note that comes, goes or wraps
    // onto more lines takes its room with it.
    QWidget *window = fWindow->window();
    for (QWidget *widget : {fWindow, window}) {
        if (widget->layout() != nullptr) {
            widget->layout()->invalidate();
            widget->layout()->activate();
        }
    }
    window->resize(window->width(),
                   window->hasHeightForWidth() ? window->heightForWidth(window->width())
                                               : window->sizeHint().height());
}

} // namespace kestrin
