#include "panes/DirPane.h"

#include "app/PaneSettings.h"
#include "app/SideFile.h"
#include "ftp/FtpMessages.h"
#include "panes/DirView.h"
#include "panes/FolderSource.h"
#include "panes/KsFtr.h"
#include "panes/KsHeader.h"
#include "panes/KsTree.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "panes/PathField.h"
#include "panes/PathJump.h"
#include "panes/SavedPlace.h"
#include "platform/NodeMonitor.h"
#include "widgets/RgbColor.h"
#include "widgets/StatusLog.h"

#include <QApplication>
#include <QResizeEvent>
#include <QVBoxLayout>
#include <cctype>

namespace kestrin {

namespace {

// The tree's own scroll bar needs this much room beside it.
constexpr int kTreeScrollBar = 14;
// The log view of a pane on a server, below its list.
constexpr int kLogHeight = 90;
// Kestrin's own file, and the prefix of the history's keys in it.
constexpr char kExtras[] = "Kestrin.extras";
constexpr char kHistoryKey[] = "History";

// "HistoryPane1" for the pane named "pane1".
std::string KeyOf(const QObject &pane)
{
    std::string name = pane.objectName().toStdString();
    if (!name.empty())
        name[0] = char(std::toupper(static_cast<unsigned char>(name[0])));
    return kHistoryKey + name;
}

} // namespace

DirPane::DirPane(const std::string &path, const QString &iconLabel, QWidget *parent)
    : QWidget(parent)
{
    const PaneSettings settings = PaneSettings::Load();
    fShowHeader = settings.showHeader;
    fShowFooter = settings.showFooter;
    QPalette colours = palette();
    colours.setColor(QPalette::Window, kPanelGrey);
    setPalette(colours);
    setAutoFillBackground(true);

    fHeader = new KsHeader(path, settings.colors.selectionBar, this);
    fList = new DirView(this, path, iconLabel, this);
    fList->setObjectName("ScrollContainer");
    fFooter = new KsFtr(this);
    fLog = new StatusLog(this);
    fLog->setObjectName("FtpLog");
    // Tab goes from pane to pane; the log is read, and its lines are
    // selected with the mouse when they are copied.
    fLog->setFocusPolicy(Qt::ClickFocus);
    fLog->hide();
    fHeader->setVisible(fShowHeader);
    fFooter->setVisible(fShowFooter);
    connect(fHeader, &KsHeader::Clicked, this, [this] { EditPath(); });
    connect(fFooter, &KsFtr::Clicked, this, [this] { FocusList(); });
    connect(fFooter, &KsFtr::FilterEdited, this, [this](const std::string &text) {
        Model().Filter().SetText(text);
    });
    connect(fFooter, &KsFtr::FilterLeft, this, [this](bool cleared) { FilterLeft(cleared); });
    // The field stands in for the list while it has the focus: the pane
    // stays the active one until the focus goes elsewhere.
    connect(fFooter, &KsFtr::FilterFocusLost, this, [this](Qt::FocusReason reason) {
        const QWidget *focus = QApplication::focusWidget();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason
            && (focus == nullptr || !isAncestorOf(focus)))
            MakeFocus(false);
    });
    connect(fList, &DirView::FocusChanged, this, [this](bool focused) { MakeFocus(focused); });
    connect(&fList->Model(), &PaneModel::ListingFinished, this, [this] {
        if (fList->Model().LastOpenStatus() == B_OK)
            fHistory.Visit(fList->Source().RecalledPlace());
    });
    setFocusProxy(fList);
}

DirPane::~DirPane()
{
    // The list watches on the pane's behalf; nothing may reach a pane that
    // is going.
    platform::NodeMonitor::StopWatching(this);
}

PaneModel &DirPane::Model() const
{
    return fList->Model();
}

PaneCommands &DirPane::Commands() const
{
    return fList->Commands();
}

QWidget *DirPane::ListWidget() const
{
    return fList;
}

void DirPane::FocusList()
{
    fList->setFocus(Qt::MouseFocusReason);
}

void DirPane::OpenFilter()
{
    fFooter->OpenFilter(Model().Filter().Text());
    SetFooterVisible(fShowFooter);
}

void DirPane::FilterLeft(bool cleared)
{
    if (cleared)
        Model().Filter().SetText({});
    SetFooterVisible(fShowFooter);
    fList->setFocus(Qt::OtherFocusReason);
}

void DirPane::SetPath()
{
    fHeader->SetText(fList->Source().HeaderText());
    fHeader->SetNote(fList->Source().HeaderNote());
    // A new place drops the filter's text; the field follows.
    const RowFilter &filter = Model().Filter();
    fFooter->ShowFilter(filter.Text());
    if (fFooter->isHidden() == (fShowFooter || fFooter->FilterShown()))
        SetFooterVisible(fShowFooter);
    const std::string shown = filter.Summary();
    fFooter->SetText(shown.empty() ? fList->GetFiles() : shown + ", " + fList->GetFiles());
    if (fLog->isHidden() == fList->Source().IsRemote()) {
        fLog->setVisible(fList->Source().IsRemote());
        Layout();
    }
}

void DirPane::SetHeaderVisible(bool visible)
{
    fShowHeader = visible;
    fHeader->setVisible(visible);
    Layout();
}

void DirPane::SetFooterVisible(bool visible)
{
    fShowFooter = visible;
    // A hidden footer still shows while the rows are filtered.
    fFooter->setVisible(visible || fFooter->FilterShown());
    Layout();
}

void DirPane::MakeFocus(bool focused)
{
    fHeader->SetSelected(focused);
}

bool DirPane::GotFocus() const
{
    return fHeader->IsSelected();
}

void DirPane::GoToDir(const std::string &path)
{
    fList->GoToDir(path);
}

void DirPane::MakePathField()
{
    fPathField = new PathField(this);
    fJump = new PathJump([this]() -> const PaneSource & { return fList->Source(); },
                         [this](std::unique_ptr<PaneSource> place,
                                const std::string &select,
                                bool fresh) {
                             if (fresh)
                                 Follow(std::move(place), select);
                             else
                                 fList->Show(std::move(place), [this] { SetPath(); });
                         },
                         this);
    connect(fPathField, &PathField::Accepted, this, [this](const QString &text) {
        fJump->Go(text.toStdString());
    });
    connect(fPathField, &PathField::Cancelled, this, [this] {
        fJump->Cancel();
        EndEditPath();
    });
    connect(fJump, &PathJump::Went, this, [this] { EndEditPath(); });
    connect(fJump,
            &PathJump::Missing,
            this,
            [this](const QString &path, int from, const QString &problem) {
                fPathField->MarkMissing(path, from, problem);
                fFooter->SetText(problem.toStdString());
            });
    connect(fPathField, &PathField::Unmarked, this, [this] { fFooter->SetText(fList->GetFiles()); });
}

void DirPane::EditPath()
{
    if (fPathField == nullptr)
        MakePathField();
    const PaneSource &place = fList->Source();
    Layout();
    // Folder names of this computer are no help on a server.
    fPathField->Begin(QString::fromStdString(place.PathText()),
                      PathJump::StartOf(place),
                      !place.IsRemote());
}

void DirPane::EndEditPath()
{
    if (fPathField == nullptr || fPathField->isHidden())
        return;
    // Hidden first: the focus it loses then is no cancel.
    fPathField->hide();
    FocusList();
    SetPath();
}

void DirPane::DoZip(const std::string &archive)
{
    // An archive that cannot be read leads back to the folder (its
    // source's fallback).
    const std::string folder = fList->CurrentPath();
    fList->Clear();
    fList->Show(FolderSource::Archive(archive, folder), [this] { SetPath(); });
    SetPath();
}

void DirPane::DoFtp(const std::string &sessionFile)
{
    Follow(SavedPlace::Session(sessionFile, fList->Source().Folder()));
}

void DirPane::Restore(const std::string &saved)
{
    const SideFile file = SideFile::Read(kExtras);
    fHistory.Load(file, HistoryKey());
    // The session's recent places are one list for the panes of a window:
    // the first pane reads it, the others share it.
    std::shared_ptr<RecentPlaces> session;
    const QList<DirPane *> panes = parentWidget() != nullptr
                                       ? parentWidget()->findChildren<DirPane *>(
                                           Qt::FindDirectChildrenOnly)
                                       : QList<DirPane *>();
    for (const DirPane *other : panes) {
        if (other != this && other->fHistory.Session())
            session = other->fHistory.Session();
    }
    if (!session) {
        session = std::make_shared<RecentPlaces>();
        session->Load(file, std::string(kHistoryKey) + "Session");
    }
    fHistory.ShareSession(std::move(session));
    Follow(SavedPlace::Read(saved, fList->Source().Folder()));
}

void DirPane::GoToPlace(const std::string &recalled)
{
    Follow(SavedPlace::Recall(recalled, fList->Source()));
}

std::string DirPane::HistoryKey() const
{
    return KeyOf(*this);
}

void DirPane::SaveHistory(SideFile &file) const
{
    fHistory.Save(file, HistoryKey());
    if (fHistory.Session())
        fHistory.Session()->Save(file, std::string(kHistoryKey) + "Session");
}

void DirPane::Notice(const std::string &text)
{
    fFooter->SetText(text);
}

void DirPane::Follow(std::unique_ptr<PaneSource> place, const std::string &select)
{
    // What the place before told the pane goes with it: a place reached
    // again through the same conversation would bring each line twice.
    fFollowing = std::make_unique<QObject>();
    // The log tells of one connection: another server's lines would be
    // taken for this one's.
    if (place->Connection() != fList->Source().Connection())
        fLog->clear();
    place->Follow(
        fFollowing.get(),
        [this](const std::string &line) {
            platform::Message status(kMsgFtpStatus);
            status.AddString("status", line);
            MessageReceived(status);
        },
        [this] { SetPath(); });
    fList->Clear();
    fList->Show(std::move(place), [this, select] {
        SetPath();
        if (!select.empty())
            fList->SelectByName(select);
    });
    SetPath();
}

void DirPane::Disconnect()
{
    if (!fList->Source().IsRemote())
        return;
    // The conversation goes with the last place of the server: its worker
    // says QUIT, or is cut short, on its own.
    const std::string local = fList->Source().Folder();
    fList->Clear();
    fList->Show(std::make_unique<FolderSource>(local), [this] { SetPath(); });
    SetPath();
}

void DirPane::ListAgainAfter(QObject *transfer)
{
    if (!fList->Source().ListsAgainAfterTransfers())
        return;
    connect(transfer, &QObject::destroyed, fList, [list = fList] {
        if (list->Source().ListsAgainAfterTransfers())
            list->Refresh();
    });
}

void DirPane::UseSortAndMode(int key, int mode)
{
    fList->SetSortMode(key, mode);
}

void DirPane::ReloadSettings()
{
    const PaneSettings settings = PaneSettings::Load();
    fHeader->SetFocusColors(settings.colors.selectionBar);
    SetHeaderVisible(settings.showHeader);
    SetFooterVisible(settings.showFooter);
    fList->ReloadSettings();
    if (fTree != nullptr)
        fTree->ReloadSettings();
}

void DirPane::DoTree()
{
    if (fTree != nullptr || !fList->Source().IsLocalFolder())
        return;
    fTreeContainer = new QWidget(this);
    auto *layout = new QVBoxLayout(fTreeContainer);
    layout->setContentsMargins(0, 0, 0, 0);
    fTree = new KsTree(fTreeContainer, [this] { return GotFocus(); });
    layout->addWidget(fTree);
    connect(fTree, &KsTree::FolderSelected, this, [this](const std::string &path) {
        if (path != fList->CurrentPath()) {
            fList->Clear();
            fList->Populate(path);
            SetPath();
        }
    });
    fTreeContainer->show();
    fList->SetTreeShown(true);
    Layout();
    fTree->Populate(fList->CurrentPath());
}

void DirPane::UnDoTree()
{
    if (fTree == nullptr)
        return;
    delete fTreeContainer;
    fTreeContainer = nullptr;
    fTree = nullptr;
    fList->SetTreeShown(false);
    Layout();
}

void DirPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    Layout();
}

void DirPane::Layout()
{
    const int width = this->width();
    const int height = this->height();
    const int top = fShowHeader ? fHeader->sizeHint().height() : 0;
    const int footer = !fFooter->isHidden() ? fFooter->sizeHint().height() : 0;
    fHeader->setGeometry(0, 0, width, top);
    if (fPathField != nullptr)
        fPathField->setGeometry(0, 0, width, std::max(top, fHeader->sizeHint().height()));
    fFooter->setGeometry(0, height - footer, width, footer);
    const int log = fLog->isHidden() ? 0
                                     : std::min(kLogHeight, std::max(0, height - top - footer) / 3);
    fLog->setGeometry(0, height - footer - log, width, log);
    const int bottom = footer + log;
    int left = 0;
    if (fTreeContainer != nullptr) {
        // The left third, below the header and above the footer.
        const int treeWidth = std::max(0, width / 3 - 4 - kTreeScrollBar) + kTreeScrollBar;
        fTreeContainer->setGeometry(0, top, treeWidth, height - top - bottom);
        left = treeWidth + 4;
    }
    fList->setGeometry(left, top, std::max(0, width - left), std::max(0, height - top - bottom));
}

void DirPane::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgListingBegan:
        fFooter->Start(100);
        break;
    case kMsgListingMax: {
        int32_t max = 0;
        if (message.FindInt32("maxvalue", &max) == B_OK)
            fFooter->SetMax(float(max));
        break;
    }
    case kMsgListingStep:
        fFooter->Update();
        break;
    case kMsgListingEnded:
        fFooter->Stop();
        SetPath();
        break;
    case kMsgPaneChanged:
        SetPath();
        if (fTree != nullptr && fList->Source().IsLocalFolder()
            && fTree->SelectedPath() != fList->CurrentPath())
            fTree->ExpandToPath(fList->CurrentPath());
        break;
    case B_NODE_MONITOR:
        fList->HandleNodeMonitor(message);
        break;
    case kMsgHelpKeys:
        // F1 in the list: the window opens the keyboard page.
        fList->SendToWindow(message);
        break;
    case kMsgFtpStatus: {
        std::string text;
        if (message.FindString("status", &text) == B_OK)
            fLog->Append(text);
        break;
    }
    default:
        break;
    }
}

} // namespace kestrin
