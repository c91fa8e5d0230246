#include "ftp/ConWin.h"

#include "app/AppUtils.h"
#include "ftp/FtpMessages.h"
#include "ftp/FtpSession.h"
#include "ftp/FtpWin.h"
#include "platform/Alerts.h"
#include "platform/NodeMonitor.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/WindowConventions.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrin {

namespace {

constexpr int kWidth = 360;
constexpr int kHeight = 240;

void NoSelection()
{
    MessageBox("Please select a session first.", "Hey", "OK");
}

std::string Shown(const std::string &name, FtpSession::Kind kind)
{
    return kind == FtpSession::Kind::Sftp ? name + " (SFTP)" : name;
}

// The session file a row stands for.
constexpr int kFileRole = Qt::UserRole;

} // namespace

ConWin::ConWin(const QRect &frame, platform::Handler *target, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , fTarget(target)
{
    setWindowTitle("Ftp Sessions");
    PlaceOnScreen(this,
                  QRect(frame.center() - QPoint(kWidth / 2, kHeight / 2), QSize(kWidth, kHeight)));

    auto *container = new QWidget(this);
    container->setObjectName("FtpConContainer");
    auto *label = new QLabel("Connect To:", container);
    label->setObjectName("label1");
    lvConnections = new QListWidget(container);
    lvConnections->setObjectName("lvConnections");
    label->setBuddy(lvConnections);
    // A list is not named by its label's buddy link alone.
    lvConnections->setAccessibleName(label->text());
    lvConnections->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(lvConnections, &QListWidget::itemActivated, this, [this] {
        platform::Message connect(kMsgFtpConnect);
        MessageReceived(connect);
    });

    auto *list = new QVBoxLayout;
    list->addWidget(label);
    list->addWidget(lvConnections);
    auto *columns = new QHBoxLayout(container);
    columns->addLayout(list, 1);
    columns->addLayout(BuildButtons(container));
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(container);

    LoadConnectionList();
    WindowConventions::Apply(this,
                             {.firstField = lvConnections,
                              .defaultButton = findChild<QPushButton *>("bConnect"),
                              .cancelButton = findChild<QPushButton *>("bCancel")});
    show();
}

ConWin::~ConWin()
{
    platform::NodeMonitor::StopWatching(this);
}

QLayout *ConWin::BuildButtons(QWidget *container)
{
    struct Button
    {
        const char *label, *name;
        uint32_t code;
    };
    const Button buttons[] = {{"Connect", "bConnect", kMsgFtpConnect},
                              {"Cancel", "bCancel", kMsgFtpCancel},
                              {"New Connection", "bNew", kMsgFtpNewSession},
                              {"Edit", "bEdit", kMsgFtpEditSession},
                              {"Delete", "bDelete", kMsgFtpDeleteSession}};
    auto *column = new QVBoxLayout;
    for (const Button &each : buttons) {
        auto *button = new QPushButton(each.label, container);
        button->setObjectName(each.name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, code = each.code] {
            platform::Message message(code);
            MessageReceived(message);
        });
        column->addWidget(button);
    }
    column->addStretch();
    return column;
}

void ConWin::LoadConnectionList()
{
    // A reload keeps the row the user chose, if it is still there, and
    // selects the first row otherwise: Return and Connect always have a
    // session to act on.
    const QString selected = lvConnections->selectedItems().isEmpty()
                                 ? QString()
                                 : lvConnections->selectedItems().first()->data(kFileRole).toString();
    Clear();
    QListWidgetItem *chosen = nullptr;
    for (const FtpSession::Kind kind : {FtpSession::Kind::Ftp, FtpSession::Kind::Sftp}) {
        for (const std::string &name : FtpSession::List(kind)) {
            auto *row = new QListWidgetItem(QString::fromStdString(Shown(name, kind)),
                                            lvConnections);
            const QString file = QString::fromStdString(FtpSession::FileNameOf(name, kind));
            row->setData(kFileRole, file);
            if (chosen == nullptr && file == selected)
                chosen = row;
        }
    }
    if (chosen == nullptr)
        chosen = lvConnections->item(0);
    if (chosen != nullptr)
        lvConnections->setCurrentItem(chosen);
    Watch();
}

void ConWin::Watch()
{
    const std::string folder = FtpSession::Folder();
    const status_t status = folder.empty() ? B_BAD_VALUE
                                           : platform::NodeMonitor::WatchDirectory(folder, this);
    if (status == B_OK)
        return;
    platform::Alerts::Go({"Err",
                          status == B_BAD_VALUE
                              ? "A bad value was passed.  Node Monitoring disabled."
                              : "Out of memory. Node Monitoring disabled.",
                          {"Oh Well"}});
}

void ConWin::Clear()
{
    lvConnections->clear();
}

void ConWin::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgFtpConnect:
        Connect();
        break;
    case kMsgFtpCancel:
        close();
        break;
    case kMsgFtpNewSession:
        New();
        break;
    case kMsgFtpEditSession:
        if (const auto selected = SelectedSession())
            Edit(selected->file);
        break;
    case kMsgFtpDeleteSession:
        Delete();
        break;
    case B_NODE_MONITOR:
        ReloadSoon();
        break;
    default:
        Handler::MessageReceived(message);
        break;
    }
}

// Saving a session is several writes, each reported: one reading of the
// folder after them serves them all.
void ConWin::ReloadSoon()
{
    if (fReloadScheduled)
        return;
    fReloadScheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            fReloadScheduled = false;
            LoadConnectionList();
        },
        Qt::QueuedConnection);
}

std::optional<ConWin::Selected> ConWin::SelectedSession() const
{
    const QList<QListWidgetItem *> selected = lvConnections->selectedItems();
    if (selected.isEmpty()) {
        NoSelection();
        return std::nullopt;
    }
    return Selected{selected.first()->text().toStdString(),
                    selected.first()->data(kFileRole).toString().toStdString()};
}

void ConWin::Connect()
{
    const auto selected = SelectedSession();
    if (!selected)
        return;
    platform::Message open(kMsgOpenFtpSession);
    open.AddString("session", selected->file);
    if (fTarget != nullptr)
        fTarget->Post(open);
    close();
}

void ConWin::New()
{
    const int kind = platform::Alerts::Go({"New Connection",
                                           "Which kind of server does the session connect to?",
                                           {"Cancel", "FTP", "SFTP"},
                                           B_INFO_ALERT});
    if (kind == 1)
        Edit(std::nullopt, FtpSession::Kind::Ftp);
    else if (kind == 2)
        Edit(std::nullopt, FtpSession::Kind::Sftp);
}

void ConWin::Edit(const std::optional<std::string> &fileName, FtpSession::Kind kind)
{
    // Owned by the main window when there is one, so that it outlives this
    // window when the user connects before saving.
    QWidget *owner = parentWidget() != nullptr ? parentWidget() : this;
    auto *settings = new FtpWin(geometry(), owner, fileName, kind);
    settings->setAttribute(Qt::WA_DeleteOnClose);
}

void ConWin::Delete()
{
    const auto selected = SelectedSession();
    if (!selected)
        return;
    const std::string question = "Are you sure you want to delete the session: " + selected->shown
                                 + "?";
    if (MessageBox(question.c_str(), "Hey", "Cancel", "Delete") == 1)
        FtpSession::Remove(selected->file);
}

} // namespace kestrin
