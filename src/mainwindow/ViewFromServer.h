#pragma once

#include "platform/Message.h"

#include <QObject>
#include <QTemporaryDir>
#include <functional>
#include <string>

class QWidget;

namespace kestrin {

class CopyWin;

// F3 on a file of a server: the file is downloaded, as any download is (the
// copy engine on a worker of the copy window's own, with its progress), into
// a private temporary folder, and shown in a viewer once it has come. The
// folder goes when the viewer closes, or at once when the download did not
// bring the file (stopped, or failed with an alert).
//
// GUI thread only.
class ViewFromServer : public QObject
{
    Q_OBJECT

public:
    // Starts the copy window of a download (the title's and the target's
    // choice are the main window's) into `folder`.
    using StartCopy
        = std::function<CopyWin *(const std::string &folder, const platform::Message &download)>;

    // `request`: the fields of the download of one "FtpFile" (an FTP or
    // SFTP download, as its kViewDownload field says). The
    // viewer is a window of `owner`'s, and the folder goes with `owner` too.
    static void Start(const platform::Message &request, QWidget *owner, const StartCopy &start);

    // The folder the file is downloaded to.
    std::string Folder() const { return fFolder.path().toStdString(); }

private:
    explicit ViewFromServer(QWidget *owner);
    void DownloadEnded();

    QWidget *fOwner;
    QTemporaryDir fFolder;
    std::string fFile;
};

} // namespace kestrin
