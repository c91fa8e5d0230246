#pragma once

#include "ftp/FtpSession.h"

#include <QObject>
#include <functional>
#include <string>

class QCheckBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace kestrin {

// The choice, in the "Ftp Connection" window, to keep the session's
// password in the desktop keyring instead of its file: a check box below
// the password field, and a line under it that says what the keyring is
// doing, or why there is none (the box is disabled then). Every call to the
// keyring runs off the GUI thread; the window never waits for one.
//
// GUI thread only.
class KeyringOption : public QObject
{
    Q_OBJECT

public:
    // Adds its rows to `fields` (at the end: the caller adds it right after
    // the password field) and asks at once whether there is a keyring.
    KeyringOption(QFormLayout *fields, QLineEdit *password);

    // For a stored session: ticks the box when the keyring keeps its
    // password, and reads it from there into the password field, which
    // stays read-only until it is in.
    void Load(const FtpSession &session);
    // Whether the session keeps its password in the keyring.
    bool Chosen() const;
    // Puts the password where the box says, then `saved` writes the session.
    // A ticked box stores it in the keyring first, and `saved` runs when it
    // is there; when it cannot be, an alert says why, `saved` does not run
    // and the window can be used again. A clear box has nothing to wait for:
    // `saved` runs at once, and the keyring forgets what it kept for a
    // session of that name.
    void Keep(const FtpSession &session, std::function<void()> saved);

private:
    enum class Keyring { Asking, There, Missing };

    // The box, the note and the password field as the state says.
    void Show();
    void FitWindow();
    void Available(const std::string &whyNone);
    void PasswordRead(const std::string &password, const std::string &error);

    QCheckBox *fBox = nullptr;
    QLabel *fNote = nullptr;
    QLineEdit *fPassword = nullptr;
    QWidget *fWindow = nullptr;
    Keyring fKeyring = Keyring::Asking;
    std::string fWhyNone;
    // The password field shows what the keyring holds (or the user's own
    // text): saving may replace the keyring's password with it.
    bool fPasswordKnown = true;
    bool fReading = false;
    bool fSaving = false;
    std::string fReadError;
};

} // namespace kestrin
