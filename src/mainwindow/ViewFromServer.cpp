#include "mainwindow/ViewFromServer.h"

#include "fileops/CopyWin.h"
#include "fileops/FileOpsMessages.h"
#include "panes/PaneMessages.h"
#include "platform/Alerts.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"
#include "viewer/ViewerWindow.h"

#include <QDir>
#include <QWidget>

namespace kestrin {

ViewFromServer::ViewFromServer(QWidget *owner)
    : QObject(owner)
    , fOwner(owner)
    , fFolder(QDir::tempPath() + "/kestrin-view-XXXXXX")
{}

void ViewFromServer::Start(const platform::Message &request, QWidget *owner, const StartCopy &start)
{
    std::string name;
    if (request.FindString("FtpFile", &name) != B_OK)
        return;
    auto *view = new ViewFromServer(owner);
    if (!view->fFolder.isValid()) {
        platform::Alerts::Go({"Download",
                              "\"" + name
                                  + "\" cannot be viewed: there is no room for a temporary copy ("
                                  + view->fFolder.errorString().toStdString() + ").",
                              {"OK"},
                              B_WARNING_ALERT});
        delete view;
        return;
    }
    view->fFile = platform::JoinPath(view->Folder(), name);
    platform::Message download(request);
    int32_t code = int32_t(kMsgFtpDownload);
    request.FindInt32(kViewDownload, &code);
    download.what = uint32_t(code);
    CopyWin *copy = start(view->Folder(), download);
    // Once the window and its worker are gone.
    connect(copy, &QObject::destroyed, view, &ViewFromServer::DownloadEnded, Qt::QueuedConnection);
}

void ViewFromServer::DownloadEnded()
{
    // A download is renamed into place only once whole: a file here came.
    if (!platform::Entry(fFile).IsFile()) {
        deleteLater();
        return;
    }
    // The folder goes with the viewer.
    setParent(ViewerWindow::Open(fFile, fOwner));
}

} // namespace kestrin
