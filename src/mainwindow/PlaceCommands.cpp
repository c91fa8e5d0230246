#include "mainwindow/PlaceCommands.h"

#include "app/SideFile.h"
#include "mainwindow/HotlistWindow.h"
#include "mainwindow/WindowMessages.h"
#include "panes/DesktopBookmarks.h"
#include "panes/DirPane.h"
#include "panes/Hotlist.h"
#include "panes/PaneModel.h"
#include "panes/PaneSource.h"
#include "panes/PlaceText.h"
#include "platform/Alerts.h"

#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <algorithm>

namespace kestrin {

namespace {

constexpr char kExtras[] = "Kestrin.extras";
// The keys of the panes' histories begin so (DirPane::HistoryKey).
constexpr char kPaneHistories[] = "HistoryPane";
// The hotlist's menu numbers its first entries, for a key each.
constexpr size_t kNumbered = 9;

// A menu item's text shows every "&" of a name.
QString MenuText(const std::string &text)
{
    return QString::fromStdString(text).replace('&', "&&");
}

// Back or Forward found nothing: the user hears and reads so.
void AtTheEnd(DirPane &pane, const std::string &text)
{
    QApplication::beep();
    pane.Notice(text);
}

std::string Shown(const DirPane &pane)
{
    return pane.Model().Source().RecalledPlace();
}

} // namespace

bool PlaceCommands::Handle(const platform::Message &message, DirPane *pane, QWidget *window)
{
    static constexpr uint32_t kCodes[] = {kCmdBack,
                                          kCmdForward,
                                          kCmdRecentPlaces,
                                          kCmdShowHotlist,
                                          kCmdAddToHotlist,
                                          kCmdEditHotlist};
    if (std::find(std::begin(kCodes), std::end(kCodes), message.what) == std::end(kCodes))
        return false;
    if (message.what == kCmdEditHotlist) {
        HotlistWindow::Open(window);
        return true;
    }
    if (pane == nullptr)
        return true;
    switch (message.what) {
    case kCmdBack:
        Back(*pane);
        break;
    case kCmdForward:
        Forward(*pane);
        break;
    case kCmdRecentPlaces:
        ShowRecent(*pane, window);
        break;
    case kCmdShowHotlist:
        ShowHotlist(*pane, window);
        break;
    case kCmdAddToHotlist:
        AddToHotlist(*pane);
        break;
    default:
        break;
    }
    return true;
}

void PlaceCommands::SaveHistories(const std::vector<DirPane *> &panes)
{
    // Read again just before writing: the file holds other features' keys.
    SideFile file = SideFile::Read(kExtras);
    // A pane removed takes its history with it; a pane added later starts
    // afresh.
    for (const std::string &key : file.Keys()) {
        if (key.starts_with(kPaneHistories))
            file.SetAll(key, {});
    }
    for (const DirPane *pane : panes)
        pane->SaveHistory(file);
    file.Write();
}

void PlaceCommands::Back(DirPane &pane)
{
    if (const std::optional<std::string> place = pane.History().Back(Shown(pane)))
        pane.GoToPlace(*place);
    else
        AtTheEnd(pane, "No place to go back to");
}

void PlaceCommands::Forward(DirPane &pane)
{
    if (const std::optional<std::string> place = pane.History().Forward())
        pane.GoToPlace(*place);
    else
        AtTheEnd(pane, "No place to go forward to");
}

void PlaceCommands::ShowRecent(DirPane &pane, QWidget *window)
{
    QMenu *menu = PopUp(window);
    // The place shown now is no place to go to.
    std::vector<std::string> listed = {Shown(pane)};
    const auto addNew = [&](const std::string &place) {
        if (std::find(listed.begin(), listed.end(), place) != listed.end())
            return;
        listed.push_back(place);
        AddPlace(*menu, pane, MenuText(PlaceText::Title(place)), place);
    };
    for (const std::string &place : pane.History().Recent())
        addNew(place);
    const size_t ofPane = listed.size();
    if (pane.History().Session()) {
        const std::vector<std::string> &session = pane.History().Session()->Places();
        if (std::any_of(session.begin(),
                        session.end(),
                        [&listed](const std::string &place) {
                            return std::find(listed.begin(), listed.end(), place) == listed.end();
                        })
            && ofPane > 1)
            menu->addSeparator();
        for (const std::string &place : session)
            addNew(place);
    }
    if (listed.size() == 1)
        menu->addAction("No recent places")->setEnabled(false);
    menu->popup(pane.ListWidget()->mapToGlobal(QPoint(8, 8)));
}

void PlaceCommands::ShowHotlist(DirPane &pane, QWidget *window)
{
    QMenu *menu = PopUp(window);
    const Hotlist hotlist = Hotlist::Read();
    size_t number = 0;
    for (const HotlistEntry &entry : hotlist.Entries()) {
        QString text = MenuText(entry.name);
        if (++number <= kNumbered)
            text = QString("&%1  %2").arg(number).arg(text);
        AddPlace(*menu, pane, text, entry.place);
    }
    if (hotlist.Entries().empty())
        menu->addAction("The hotlist is empty")->setEnabled(false);
    const std::vector<DesktopBookmark> bookmarks = DesktopBookmarks::Read();
    if (!bookmarks.empty())
        menu->addSeparator();
    for (const DesktopBookmark &bookmark : bookmarks)
        AddPlace(*menu, pane, MenuText(bookmark.label), bookmark.path);
    // The list is edited from where it is shown, too.
    menu->addSeparator();
    QObject::connect(menu->addAction("&Edit Hotlist…"), &QAction::triggered, window, [window] {
        HotlistWindow::Open(window);
    });
    menu->popup(pane.ListWidget()->mapToGlobal(QPoint(8, 8)));
}

void PlaceCommands::AddToHotlist(DirPane &pane)
{
    const std::string place = Shown(pane);
    if (place.empty()) {
        platform::Alerts::Go({"Hotlist",
                              "Query results cannot be kept in the hotlist; the folders they "
                              "are in can.",
                              {"OK"},
                              B_INFO_ALERT});
        return;
    }
    Hotlist hotlist = Hotlist::Read();
    const std::string title = PlaceText::Title(place);
    if (!hotlist.Add(title, place)) {
        pane.Notice("Already in the hotlist");
        return;
    }
    if (!hotlist.Write()) {
        platform::Alerts::Go(
            {"Hotlist", "The hotlist could not be saved.", {"OK"}, B_WARNING_ALERT});
        return;
    }
    pane.Notice("Added to the hotlist: " + title);
}

QMenu *PlaceCommands::PopUp(QWidget *window)
{
    auto *menu = new QMenu(window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName("PlacesMenu");
    return menu;
}

void PlaceCommands::AddPlace(QMenu &menu,
                             DirPane &pane,
                             const QString &text,
                             const std::string &place)
{
    QAction *action = menu.addAction(text);
    action->setToolTip(QString::fromStdString(PlaceText::Title(place)));
    QPointer<DirPane> target(&pane);
    QObject::connect(action, &QAction::triggered, &menu, [target, place] {
        if (target == nullptr)
            return;
        target->GoToPlace(place);
        target->ListWidget()->setFocus(Qt::PopupFocusReason);
    });
}

} // namespace kestrin
