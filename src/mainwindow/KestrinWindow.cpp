#include "mainwindow/KestrinWindow.h"

#include "app/AppInfo.h"
#include "app/AppUtils.h"
#include "app/NumberText.h"
#include "app/Profile.h"
#include "fileops/CopyWin.h"
#include "fileops/GetInfo.h"
#include "fileops/OverWin.h"
#include "fileops/PermissionsWin.h"
#include "fileops/TransferPlanner.h"
#include "fileops/Trash.h"
#include "ftp/ConWin.h"
#include "mainwindow/AddOns.h"
#include "mainwindow/ClipboardCommands.h"
#include "mainwindow/FirstPaint.h"
#include "mainwindow/FocusedPaneCommands.h"
#include "mainwindow/MainMenus.h"
#include "mainwindow/MarkCommands.h"
#include "mainwindow/PlaceCommands.h"
#include "mainwindow/RowViewCommands.h"
#include "mainwindow/ViewFromServer.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DirListItem.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/FolderSource.h"
#include "panes/PaneCommands.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "panes/PaneSource.h"
#include "platform/Alerts.h"
#include "platform/Background.h"
#include "platform/Entry.h"
#include "platform/Launcher.h"
#include "platform/MountWatcher.h"
#include "platform/NodeMonitor.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"
#include "platform/Volume.h"
#include "prefs/OptionsWindow.h"
#include "query/QueryWindow.h"
#include "viewer/ViewerWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <sys/stat.h>

namespace kestrin {

namespace {

bool Read(const std::string &key, std::string *value)
{
    return GetProfileString(kSettingsFolder, key, value, kSettingsFile);
}

void Write(const std::string &key, const std::string &value)
{
    SetProfileString(kSettingsFolder, key, value, kSettingsFile);
}

void WriteNumber(const std::string &key, long value)
{
    char text[24];
    ltoa(value, text);
    Write(key, text);
}

std::string Home()
{
    return PaneModel::DefaultPath();
}

} // namespace

KestrinWindow::KestrinWindow(const QRect &frame, const QString &title)
{
    setWindowTitle(title);
    setGeometry(frame);
    fPaneRow = new QWidget(this);
    fPaneRow->installEventFilter(this);
    setCentralWidget(fPaneRow);
    CreateMenus();
    platform::MountWatcher::Watch(this);
    // Scanning the add-on folders waits until the window is on the screen.
    fFirstPaint = new FirstPaint(fPaneRow);
    connect(fFirstPaint, &FirstPaint::Painted, this, [this] {
        LoadAddOns(MainMenus::AddOnsMenu(menuBar()));
        fAddOnsLoaded = true;
        emit FirstPainted();
    });
}

KestrinWindow::~KestrinWindow()
{
    platform::MountWatcher::StopWatching(this);
}

void KestrinWindow::CreateMenus()
{
    MainMenus::Build(menuBar(), [this](uint32_t code) {
        platform::Message command(code);
        MessageReceived(command);
    });
}

void KestrinWindow::LoadAddOns(QMenu *menu)
{
    bool shortcutTaken = false;
    for (const AddOns::Item &item : AddOns::Find()) {
        QAction *action = menu->addAction(QString::fromUtf8(item.label.c_str()));
        // Installed twice (Kestrin's own and the user's), the first keeps
        // the shortcut: a key cannot start two things.
        if (item.shortcutA && !shortcutTaken) {
            action->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_A));
            shortcutTaken = true;
        }
        const std::string label = item.label;
        connect(action, &QAction::triggered, this, [this, label] { RunAddOn(label); });
    }
}

void KestrinWindow::RunAddOn(const std::string &label)
{
    DirPane *pane = GetFocusedPane();
    if (pane == nullptr)
        return;
    platform::Message refs(kMsgCopyRequest);
    if (!pane->List()->Commands().GetRefMsg(&refs)) {
        MsgBox("Please select an item first");
        return;
    }
    std::vector<entry_ref> entries;
    entry_ref ref;
    for (int32_t i = 0; refs.FindRef("refs", i, &ref) == B_OK; i++)
        entries.push_back(ref);
    entry_ref folder;
    platform::Entry(pane->List()->CurrentPath()).GetRef(&folder);
    AddOns::Run(label, folder, entries, [](const std::string &problem) {
        if (!problem.empty())
            platform::Alerts::Go({"Add-On", problem, {"OK"}, B_WARNING_ALERT});
    });
}

// ---- Panes ----------------------------------------------------------------

void KestrinWindow::AddFilePane(const std::string &place, int type, int sort, int mode)
{
    if (int(fPanes.size()) >= kMaxPanes)
        return;
    const int number = int(fPanes.size()) + 1;
    auto *pane = new DirPane(Home(), QString::number(number % 10), fPaneRow);
    pane->setObjectName(QString("pane%1").arg(number));
    pane->List()->SetWindowTarget(this);
    // The place as the profile keeps it: a folder's path, or a server's
    // session by its name (connected again, from the home folder).
    pane->Restore(place);
    fPanes.push_back(pane);
    pane->show();
    if (type == 1)
        pane->DoTree();
    FocusPane(pane);
    // Each pane makes the window two units wider and taller, as it always has.
    GrowBy(1);
    GrowBy(1);
    pane->UseSortAndMode(sort, mode);
}

void KestrinWindow::GrowBy(int units)
{
    resize(width() + units, height() + units);
    LayoutPanes();
}

void KestrinWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    LayoutPanes();
}

bool KestrinWindow::eventFilter(QObject *watched, QEvent *event)
{
    // The row of panes gets its size from the window's layout, which runs
    // later than the window's own resizing: the panes follow the row.
    if (watched == fPaneRow && event->type() == QEvent::Resize)
        LayoutPanes();
    return QMainWindow::eventFilter(watched, event);
}

void KestrinWindow::LayoutPanes()
{
    if (fPanes.empty())
        return;
    // Equal shares, each pane starting one unit right of its neighbour's
    // right edge.
    const double share = double(fPaneRow->width()) / double(fPanes.size());
    double previousRight = -1;
    for (DirPane *pane : fPanes) {
        const double left = previousRight + 1;
        pane->setGeometry(int(left), 0, int(share), fPaneRow->height());
        previousRight = left + double(int(share));
    }
}

DirPane *KestrinWindow::GetFocusedPane() const
{
    // The header that shows its pane selected says which pane is the
    // focused one: Kestrin's own state, true before the window is active
    // (folders handed over at start) and while a menu or another window
    // has the keyboard.
    for (DirPane *pane : fPanes) {
        if (pane->GotFocus())
            return pane;
    }
    for (const QWidget *widget = QApplication::focusWidget(); widget != nullptr;
         widget = widget->parentWidget()) {
        for (DirPane *pane : fPanes) {
            if (pane == widget)
                return pane;
        }
    }
    return nullptr;
}

void KestrinWindow::FocusPane(DirPane *pane, Qt::FocusReason reason)
{
    // The list hears of the focus only once the window is active; the
    // headers are set now, so that the focused pane is known at once.
    for (DirPane *each : fPanes)
        each->MakeFocus(each == pane);
    pane->List()->setFocus(reason);
}

DirPane *KestrinWindow::PaneOfView(const void *view) const
{
    for (DirPane *pane : fPanes) {
        if (static_cast<const QWidget *>(pane->List()) == view)
            return pane;
    }
    return nullptr;
}

DirPane *KestrinWindow::OtherPane(const DirPane *pane) const
{
    for (size_t i = 0; i < fPanes.size(); i++) {
        if (fPanes[i] != pane)
            continue;
        if (i + 1 < fPanes.size())
            return fPanes[i + 1];
        return i > 0 ? fPanes[i - 1] : nullptr;
    }
    return nullptr;
}

void KestrinWindow::FocusFirst()
{
    if (!fPanes.empty())
        FocusPane(fPanes.front());
}

void KestrinWindow::SetPath(const std::string &path, bool asItem)
{
    if (GetFocusedPane() == nullptr)
        AddFilePane(Home(), 0, 1, 0);
    DirPane *pane = GetFocusedPane();
    if (pane == nullptr)
        pane = fPanes.empty() ? nullptr : fPanes.back();
    if (pane == nullptr)
        return;
    struct stat info;
    if (platform::StatPath(path, &info) != B_OK) {
        platform::Alerts::Go(
            {"Kestrin", "There is no folder \"" + path + "\" to show.", {"OK"}, B_WARNING_ALERT});
        return;
    }
    DirView *list = pane->List();
    list->Clear();
    if (S_ISDIR(info.st_mode) && !asItem) {
        list->Populate(path);
    } else {
        // A document (or an item asked for as one): its folder, with it selected.
        std::string name;
        const std::string folder = platform::ParentPath(path, &name);
        list->Show(std::make_unique<FolderSource>(folder),
                   [list, name] { list->SelectByName(name); });
    }
    pane->SetPath();
}

void KestrinWindow::Clear()
{
    for (DirPane *pane : fPanes)
        delete pane;
    fPanes.clear();
}

void KestrinWindow::Default()
{
    Clear();
    AddFilePane(Home(), 0, 1, 0);
    AddFilePane(Home(), 0, 1, 0);
}

void KestrinWindow::Renumber()
{
    for (size_t i = 0; i < fPanes.size(); i++) {
        fPanes[i]->List()->SetColumnLabel(0, QString::number((i + 1) % 10));
        fPanes[i]->setObjectName(QString("pane%1").arg(i + 1));
    }
}

void KestrinWindow::RemovePane()
{
    DirPane *focused = GetFocusedPane();
    if (focused == nullptr || fPanes.size() <= 1)
        return;
    std::erase(fPanes, focused);
    delete focused;
    FocusPane(fPanes.back());
    Renumber();
    LayoutPanes();
}

void KestrinWindow::OpenInNeighbour(int offset)
{
    DirPane *pane = GetFocusedPane();
    if (pane == nullptr)
        return;
    if (pane->List()->Source().IsRemote()) {
        MsgBox("Navigating this way is not supported.(Yet)");
        return;
    }
    std::string folder;
    if (pane->List()->GetSelected(&folder) != 1)
        return;
    const auto at = std::find(fPanes.begin(), fPanes.end(), pane) - fPanes.begin() + offset;
    if (at < 0 || at >= long(fPanes.size()))
        return;
    DirPane *target = fPanes[size_t(at)];
    target->List()->Clear();
    target->List()->Populate(folder);
    target->SetPath();
}

void KestrinWindow::VolumeUnmounted(dev_t device)
{
    for (DirPane *pane : fPanes) {
        // The device the folder was listed from: once unmounted, its path
        // leads to the folder the volume was mounted on.
        if (pane->List()->FolderDevice() == device) {
            pane->List()->Clear();
            pane->List()->Populate(Home());
            pane->SetPath();
        }
    }
}

// ---- Settings -------------------------------------------------------------

void KestrinWindow::SaveSettings()
{
    const QRect frame = geometry();
    WriteNumber("Left", frame.left());
    WriteNumber("Top", frame.top());
    WriteNumber("Width", frame.width());
    WriteNumber("Height", frame.height());
    Write("bCaseSensitiveSort", GetbCaseSensitiveSort() ? "1" : "0");
    WriteNumber("NumPanes", long(fPanes.size()));
    RowViewCommands::Save(fPanes);
    for (size_t i = 0; i < fPanes.size(); i++) {
        const std::string key = "Pane" + std::to_string(i);
        const DirView *list = fPanes[i]->List();
        Write(key, list->Source().SavedPlace());
        WriteNumber(key + "_Sort", list->GetSort());
        WriteNumber(key + "_Mode", list->GetSortMode());
        Write(key + "_Type", fPanes[i]->Tree() != nullptr ? "1" : "0");
    }
    PlaceCommands::SaveHistories(fPanes);
    if (!fPanes.empty()) {
        for (int column = 1; column <= 4; column++)
            WriteNumber("Column" + std::to_string(column),
                        long(fPanes.front()->List()->SavedColumnWidth(column)));
    }
}

void KestrinWindow::GetSettings()
{
    std::string value;
    if (Read("Left", &value)) {
        const int left = kestrin::atoi(value.c_str());
        const int top = Read("Top", &value) ? kestrin::atoi(value.c_str()) : left;
        move(left, top);
    }
    if (Read("Width", &value)) {
        const int width = kestrin::atoi(value.c_str());
        const int height = Read("Height", &value) ? kestrin::atoi(value.c_str()) : width;
        resize(width, height);
    }
    // Whatever the file said, the window ends up on a screen and usable.
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect room = screen->availableGeometry();
        QRect frame = geometry();
        frame.setSize(frame.size().boundedTo(room.size()).expandedTo(QSize(320, 200)));
        if (!room.intersects(frame) || frame.left() < room.left() || frame.top() < room.top())
            frame.moveTopLeft(room.topLeft() + QPoint(10, 40));
        if (frame.right() > room.right())
            frame.moveRight(room.right());
        if (frame.bottom() > room.bottom())
            frame.moveBottom(room.bottom());
        setGeometry(frame);
    }
    if (Read("NumPanes", &value)) {
        // Panes past the tenth would be refused anyway.
        const int count = std::min(kestrin::atoi(value.c_str()), kMaxPanes);
        int sort = 1, mode = 0;
        for (int i = 0; i < count; i++) {
            const std::string key = "Pane" + std::to_string(i);
            std::string path;
            // A pane missing from the file opens on the home folder, sorted
            // as the pane before it.
            if (!Read(key, &path)) {
                AddFilePane(Home(), 0, sort, mode);
                continue;
            }
            int type = 0;
            if (Read(key + "_Sort", &value))
                sort = kestrin::atoi(value.c_str());
            if (Read(key + "_Mode", &value))
                mode = kestrin::atoi(value.c_str());
            if (Read(key + "_Type", &value))
                type = kestrin::atoi(value.c_str());
            AddFilePane(path, type, sort, mode);
        }
    }
    if (fPanes.empty())
        Default();
    for (int column = 1; column <= 4; column++) {
        if (!Read("Column" + std::to_string(column), &value))
            continue;
        for (DirPane *pane : fPanes)
            pane->List()->SetColumnWidth(column, float(kestrin::atoi(value.c_str())));
    }
    RowViewCommands::Restore(fPanes);
    fSettingsApplied = true;
    GetPreferences();
}

void KestrinWindow::GetPreferences()
{
    for (DirPane *pane : fPanes)
        pane->ReloadSettings();
}

// ---- Commands -------------------------------------------------------------

void KestrinWindow::DoNewFolder()
{
    if (DirPane *pane = GetFocusedPane())
        pane->List()->Commands().NewFolder();
}

void KestrinWindow::DoRename()
{
    if (DirPane *pane = GetFocusedPane())
        pane->List()->Commands().Edit();
}

void KestrinWindow::DoGetSpace()
{
    if (DirPane *pane = GetFocusedPane())
        pane->List()->Commands().GetSize();
}

void KestrinWindow::OpenInfoWindows(DirView *list)
{
    // An entry on a server is told by its place.
    if (list->Commands().ShowPlaceInfo())
        return;
    // Each file's type is worked out afresh first, so the kind shown is
    // what the content says.
    list->Commands().Identify();
    for (const std::string &path : list->Commands().PathsToActOn())
        OpenInfoWindow(path);
}

void KestrinWindow::OpenInfoWindow(const std::string &path)
{
    auto *info = new GetInfo(path, geometry(), this);
    info->setAttribute(Qt::WA_DeleteOnClose);
    info->show();
}

void KestrinWindow::Help(int which)
{
    std::string folder;
    if (platform::FindDirectory(platform::DirectoryWhich::Help, &folder) != B_OK)
        return;
    if (which == 0)
        folder += "/Index.html";
    else if (which == 1)
        folder += "/keyboardks.html";
    // Without a program that shows web pages the user is told where the
    // page is, to open it by other means.
    platform::Launcher::OpenWithPreferredApplication(folder, platform::FailureNotice::Alert);
}

void KestrinWindow::EmptyTrash()
{
    // No question and no progress window; a trash of many thousands of
    // items is emptied off the GUI thread all the same.
    platform::Background::Start(nullptr, [](const platform::Background::Task &) {
        Trash trash;
        if (trash.InitCheck() == B_OK)
            trash.Empty();
    });
}

void KestrinWindow::DoAboutBox()
{
    platform::Alerts::Go({"About Kestrin",
                          std::string(kWindowTitle)
                              + "\n\n\nA two-pane file manager in the BeOS tradition."
                                "\nMade by the Kestrin developers.",
                          {"Big Deal"},
                          B_INFO_ALERT});
}

CopyWin *KestrinWindow::StartCopyWindow(const TransferPlan &plan)
{
    // The window shows itself, runs the plan on a worker of its own and
    // deletes itself when done.
    QRect frame(0, 0, 400, 160);
    frame.moveCenter(geometry().center());
    return new CopyWin(frame, plan, this);
}

bool KestrinWindow::DoDrag(platform::Message &message)
{
    DirPane *source = GetFocusedPane();
    if (message.what == kMsgDeleteRequest) {
        if (source != nullptr) {
            const std::string folder = source->List()->CurrentPath();
            StartCopyWindow({"Delete", folder, {{message, folder}}, {}});
        }
        return source != nullptr;
    }
    void *targetView = nullptr;
    DirPane *target = message.FindPointer("Target", &targetView) == B_OK ? PaneOfView(targetView)
                                                                         : OtherPane(source);
    if (target == nullptr)
        return false;
    // What is dropped comes from disk, whichever pane has the focus.
    std::string dragging, from;
    message.FindString("From", &from);
    const TransferPlace origin = source != nullptr
                                         && !(message.FindString("Dragging", &dragging) == B_OK
                                              && dragging == "true")
                                     ? source->List()->Source().Place()
                                     : TransferPlace::LocalFolder(from);
    const TransferPlan plan = TransferPlanner::Plan(message,
                                                    origin,
                                                    target->List()->Source().Place());
    if (plan.Refused()) {
        platform::Alerts::Go(*plan.refusal);
        return false;
    }
    CopyWin *copy = StartCopyWindow(plan);
    for (DirPane *pane : {source, target}) {
        if (pane != nullptr)
            pane->ListAgainAfter(copy);
    }
    return true;
}

void KestrinWindow::closeEvent(QCloseEvent *event)
{
    SaveSettings();
    // Copies still running stop here: each deletes the file it was writing,
    // so nothing half-copied stays behind. A copy window takes its own
    // windows (an open overwrite question) with it, so the list of windows is
    // not walked while deleting.
    std::vector<QPointer<CopyWin>> copies;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *copy = qobject_cast<CopyWin *>(window))
            copies.emplace_back(copy);
    }
    for (const QPointer<CopyWin> &copy : copies)
        delete copy.data();
    event->accept();
    QCoreApplication::quit();
}

void KestrinWindow::MessageReceived(platform::Message &message)
{
    const uint32_t what = message.what;
    if (what >= kCmdFocusPane && what < kCmdFocusPane + kMaxPanes) {
        const size_t index = what - kCmdFocusPane;
        if (index < fPanes.size())
            FocusPane(fPanes[index], Qt::ShortcutFocusReason);
        return;
    }
    if (FocusedPaneCommands::Handle(message, GetFocusedPane(), this)
        || PlaceCommands::Handle(message, GetFocusedPane(), this)
        || RowViewCommands::Handle(message, GetFocusedPane(), fPanes, this))
        return;
    if (MarkCommands::Handle(message, GetFocusedPane(), OtherPane(GetFocusedPane()), this, this))
        return;
    if (ClipboardCommands::Handle(message, *this))
        return;
    DirPane *pane = GetFocusedPane();
    DirView *list = pane != nullptr ? pane->List() : nullptr;
    std::string text;
    switch (what) {
    case kCmdOccupiedSpace:
        DoGetSpace();
        break;
    case kCmdAbout:
        DoAboutBox();
        break;
    case kCmdNewFolder:
        DoNewFolder();
        break;
    case kCmdRename:
        DoRename();
        break;
    case kCmdEmptyTrash:
        EmptyTrash();
        break;
    case kCmdOpenInLeftPane:
        OpenInNeighbour(-1);
        break;
    case kCmdOpenInRightPane:
        OpenInNeighbour(1);
        break;
    case kCmdAddPane:
        AddFilePane(Home(), 0, 1, 0);
        break;
    case kCmdRemovePane:
        RemovePane();
        break;
    case kCmdRevertToDefault:
        Default();
        break;
    case kCmdQuery: {
        // Owned by this window, the receiver of its results, and gone with it.
        const PaneSource *place = pane != nullptr ? &pane->Model().Source() : nullptr;
        auto *query = new QueryWindow(geometry(),
                                      this,
                                      this,
                                      place != nullptr && place->IsLocalFolder() ? place->Folder()
                                                                                 : std::string());
        query->setAttribute(Qt::WA_DeleteOnClose);
        break;
    }
    case kCmdFtpConnections: {
        // Owned by this window, the receiver of its 602, and gone with it.
        auto *sessions = new ConWin(frameGeometry(), this, this);
        sessions->setAttribute(Qt::WA_DeleteOnClose);
        break;
    }
    case kCmdPreferences: {
        // Owned by this window, the receiver of its 614, and gone with it.
        auto *options = new OptionsWindow(geometry(), this, this);
        options->setAttribute(Qt::WA_DeleteOnClose);
        break;
    }
    case kCmdOverwrite: {
        QRect frame(0, 0, 400, 200);
        frame.moveCenter(geometry().center());
        auto *question = new OverWin(frame, "Overwrite", this);
        question->setAttribute(Qt::WA_DeleteOnClose);
        question->show();
        break;
    }
    case kCmdHelp:
        Help(0);
        break;
    case kCmdKeyboardHelp:
        Help(1);
        break;
    case kCmdGetInfo:
        if (list != nullptr)
            OpenInfoWindows(list);
        break;
    case kCmdPermissions: {
        // Owned by this window, the mode's receiver, and gone with it.
        auto *permissions = new PermissionsWin(geometry(), this, this);
        permissions->setAttribute(Qt::WA_DeleteOnClose);
        break;
    }
    case kMsgColumnWidth:
        if (fSettingsApplied) {
            std::string index, width;
            message.FindString("ColumnIndex", &index);
            message.FindString("ColumnWidth", &width);
            for (DirPane *each : fPanes)
                each->List()->SetColumnWidth(kestrin::atoi(index.c_str()),
                                             float(kestrin::atoi(width.c_str())));
        }
        break;
    case kMsgFtpDownload:
    case kMsgSftpDownload:
    case kMsgSftpUpload:
    case kMsgPackRequest:
    case kMsgUnpackRequest:
    case kMsgCopyRequest:
    case kMsgDeleteRequest:
        DoDrag(message);
        break;
    case kMsgPreferencesChanged:
        GetPreferences();
        break;
    case kMsgOpenViewer:
        if (message.FindString("path", &text) == B_OK)
            ViewerWindow::Open(text, this);
        break;
    case kMsgViewFromServer:
        ViewFromServer::Start(
            message, this, [this](const std::string &folder, const platform::Message &download) {
                return StartCopyWindow({"Download", folder, {{download, folder}}, {}});
            });
        break;
    case B_REFS_RECEIVED:
        RefsReceived(message);
        break;
    case kCmdZoom:
        if (isMaximized())
            showNormal();
        else
            showMaximized();
        break;
    case B_QUIT_REQUESTED:
        close();
        break;
    case B_NODE_MONITOR: {
        int32_t opcode = 0, device = 0;
        message.FindInt32("opcode", &opcode);
        message.FindInt32("device", &device);
        if (opcode == B_DEVICE_UNMOUNTED)
            VolumeUnmounted(dev_t(device));
        break;
    }
    default:
        break;
    }
}

void KestrinWindow::RefsReceived(const platform::Message &message)
{
    std::string show;
    message.FindString(kRefsShow, &show);
    for (const std::string &path : platform::Entry::PathsOfRefs(message)) {
        if (show == kRefsShowProperties)
            OpenInfoWindow(path);
        else
            SetPath(path, show == kRefsShowItems);
    }
}

} // namespace kestrin
