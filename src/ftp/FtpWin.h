#pragma once

#include "ftp/FtpSession.h"
#include "platform/Handler.h"

#include <QWidget>
#include <optional>
#include <string>

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace kestrin {

class KeyringOption;

// The "Ftp Connection" window: the settings of one stored session, new or
// read from its file. "OK" saves once the session, host, port and user name
// are filled in; saving under another name leaves the old file as it is.
// Below the session's fields: whether it uses TLS, and the certificate the
// user trusts for it, which can be forgotten; both are saved in Kestrin's
// own file of the session (FtpSecurity), never in the session file.
//
// GUI thread only.
class FtpWin : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Shows itself centred on `frame`, on the session file `sessionFile`
    // ("<name>.ftp" or "<name>.sftp") or on a new session of `kind`. An SFTP
    // session has no TLS choice, and its password is not offered to the
    // keyring, whose entries are an FTP session's by name.
    FtpWin(const QRect &frame,
           QWidget *owner,
           const std::optional<std::string> &sessionFile,
           FtpSession::Kind kind = FtpSession::Kind::Ftp);

    // Fills the fields from a session file; a field keeps its text where the
    // file gives an empty value.
    void LoadFtpSettings(const std::string &sessionFile);
    // Writes the fields to "<Session>.ftp" (and whether the password is in
    // the keyring to the session's options); false when the file could not
    // be made (the user has been told).
    bool SetFtpSetting();

    void MessageReceived(platform::Message &message) override;

private:
    QLineEdit *AddField(const char *label, const char *name);
    void BuildSecurity();
    void ShowTrusted(const std::string &fingerprint);
    void BuildButtons();
    // The first of the required fields left empty gets the focus and an alert.
    bool Validate();
    // The session as the fields give it.
    FtpSession Fields() const;

    QFormLayout *fFields = nullptr;
    QLineEdit *text1 = nullptr; // Session:
    QLineEdit *text2 = nullptr; // Host:
    QLineEdit *text3 = nullptr; // Port:
    QLineEdit *text4 = nullptr; // User Name:
    QLineEdit *text5 = nullptr; // Password:
    QLineEdit *text6 = nullptr; // Remote Dir:
    QLineEdit *text7 = nullptr; // Local Dir:
    FtpSession::Kind fKind;
    // Whether the password is kept in the desktop keyring instead.
    KeyringOption *fKeyring = nullptr;
    QComboBox *fTls = nullptr;
    QLabel *fTrusted = nullptr;
    int fTrustedRow = 0;
    std::string fTrustedCertificate;
};

} // namespace kestrin
