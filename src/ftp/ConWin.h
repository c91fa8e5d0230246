#pragma once

#include "ftp/FtpSession.h"
#include "platform/Handler.h"

#include <QWidget>
#include <optional>
#include <string>

class QLayout;
class QListWidget;

namespace kestrin {

// The "Ftp Sessions" window: the stored sessions in the order the settings
// folder lists them (the FTP ones, then the SFTP ones, shown as
// "name (SFTP)"), kept in step with the folder by node monitoring, and the
// buttons to connect to one (handing it to the main window), make, edit or
// delete one.
//
// GUI thread only.
class ConWin : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Shows itself centred on `frame`; connecting sends 602 to `target`,
    // which must outlive the window (the main window owns it).
    ConWin(const QRect &frame, platform::Handler *target, QWidget *parent = nullptr);
    ~ConWin() override;

    // Fills the list from the settings folder and watches the folder.
    void LoadConnectionList();
    void Clear();

    void MessageReceived(platform::Message &message) override;

private:
    QLayout *BuildButtons(QWidget *container);
    struct Selected
    {
        std::string shown; // as the list shows it
        std::string file;  // "<name>.ftp" or "<name>.sftp"
    };
    // The selected session; none, after telling the user, without one.
    std::optional<Selected> SelectedSession() const;
    // Asks which kind of session to make, then opens its window.
    void New();
    void Watch();
    void ReloadSoon();
    void Connect();
    // Opens a settings window on a session file, or on a new session.
    void Edit(const std::optional<std::string> &fileName,
              FtpSession::Kind kind = FtpSession::Kind::Ftp);
    void Delete();

    platform::Handler *fTarget;
    QListWidget *lvConnections;
    bool fReloadScheduled = false;
};

} // namespace kestrin
