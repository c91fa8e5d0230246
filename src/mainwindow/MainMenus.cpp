#include "mainwindow/MainMenus.h"

#include "mainwindow/WindowMessages.h"

#include <QMenu>
#include <QMenuBar>

namespace kestrin {

namespace {

struct Item
{
    const char *label; // null for a separator
    QKeySequence shortcut;
    uint32_t code;
};

struct Menu
{
    const char *title;
    std::vector<Item> items;
};

QKeySequence WithAlt(int key, Qt::KeyboardModifiers more = {})
{
    return QKeySequence(QKeyCombination(Qt::AltModifier | more, Qt::Key(key)));
}

QKeySequence Command(int key, bool shift = false)
{
    const QKeyCombination plain(Qt::ControlModifier, Qt::Key(key));
    return shift
               ? QKeySequence(QKeyCombination(Qt::ControlModifier | Qt::ShiftModifier, Qt::Key(key)))
               : QKeySequence(plain);
}

std::vector<Menu> Table()
{
    const QKeySequence none;
    std::vector<Menu> menus = {
        {"File",
         {{"Open", Command(Qt::Key_O), kCmdOpen},
          {"Rename", Command(Qt::Key_E), kCmdRename},
          {"Get Info", Command(Qt::Key_I), kCmdGetInfo},
          {"Permissions", none, kCmdPermissions},
          {"Identify", Command(Qt::Key_Y), kCmdIdentify},
          {"New Folder", Command(Qt::Key_N), kCmdNewFolder},
          {"Delete File(s)", Command(Qt::Key_T), kCmdTrash},
          {"Empty Trash", none, kCmdEmptyTrash},
          {nullptr, none, 0},
          {"Calculate Occupied Space", Command(Qt::Key_S), kCmdOccupiedSpace},
          {nullptr, none, 0},
          {"About", none, kCmdAbout},
          {nullptr, none, 0},
          {"Quit", Command(Qt::Key_Q), B_QUIT_REQUESTED}}},
        // Ours, beside the historic menus: the clipboard, marking by
        // pattern and comparing folders.
        {"Edit",
         {{"Copy to Clipboard", Command(Qt::Key_C), kCmdCopyToClipboard},
          {"Cut to Clipboard", Command(Qt::Key_X), kCmdCutToClipboard},
          {"Paste from Clipboard", WithAlt(Qt::Key_V, Qt::ControlModifier), kCmdPasteFromClipboard},
          {nullptr, none, 0},
          {"Mark by Pattern…", Command(Qt::Key_M), kCmdMarkByPattern},
          {"Unmark by Pattern…", Command(Qt::Key_M, true), kCmdUnmarkByPattern},
          {nullptr, none, 0},
          {"Compare Folders", Command(Qt::Key_K), kCmdCompareFolders},
          {"Compare Folders by Content", Command(Qt::Key_K, true), kCmdCompareByContent}}},
        {"Navigation",
         {{"Up a Level", Command(Qt::Key_Up), kCmdUpALevel},
          {"Open in Left Pane", Command(Qt::Key_Left), kCmdOpenInLeftPane},
          {"Open in Right Pane", Command(Qt::Key_Right), kCmdOpenInRightPane},
          {"Down a Level", Command(Qt::Key_Down), kCmdDownALevel},
          // Ours, after the historic items.
          {nullptr, none, 0},
          {"Back", WithAlt(Qt::Key_Left), kCmdBack},
          {"Forward", WithAlt(Qt::Key_Right), kCmdForward},
          {"Recent Places…", WithAlt(Qt::Key_Down), kCmdRecentPlaces},
          {"Go to Path…", Command(Qt::Key_L), kCmdGoToPath},
          {nullptr, none, 0},
          {"Hotlist…", Command(Qt::Key_B), kCmdShowHotlist},
          {"Add to Hotlist", Command(Qt::Key_B, true), kCmdAddToHotlist},
          {"Edit Hotlist…", WithAlt(Qt::Key_B, Qt::ControlModifier), kCmdEditHotlist}}},
        {"View",
         {{"Add Pane", Command(Qt::Key_P), kCmdAddPane},
          {"Remove Pane", Command(Qt::Key_P, true), kCmdRemovePane},
          {"Revert to Default", Command(Qt::Key_D), kCmdRevertToDefault},
          {"Query", Command(Qt::Key_U), kCmdQuery},
          {"Ftp Connections", Command(Qt::Key_F), kCmdFtpConnections},
          {"Disconnect FTP Connection", Command(Qt::Key_F, true), kCmdDisconnectFtp},
          {"Convert View to Tree View", Command(Qt::Key_V), kCmdTreeView},
          {"Remove Tree View", Command(Qt::Key_V, true), kCmdRemoveTreeView},
          {"Preferences", Command(Qt::Key_R), kCmdPreferences},
          {"Zoom", Command(Qt::Key_Slash), kCmdZoom},
          // Ours, after the historic items.
          {nullptr, none, 0},
          {"Filter…", Command(Qt::Key_J), kCmdFilter},
          {"Show Hidden Files", Command(Qt::Key_H), kCmdHiddenFiles}}},
        {"Applications",
         {{"Open Tracker", none, kCmdOpenTracker},
          {"Open Terminal", Command(Qt::Key_T, true), kCmdOpenTerminal}}},
        {"Windows", {}},
        {"Help", {{"Keybord Shortcuts", none, kCmdKeyboardHelp}, {"Help", none, kCmdHelp}}},
        {"Add-Ons", {}},
    };
    std::vector<Item> &windows = menus[5].items;
    for (int pane = 1; pane <= kMaxPanes; pane++) {
        const int key = pane == kMaxPanes ? Qt::Key_0 : Qt::Key_0 + pane;
        windows.push_back({nullptr, Command(key), kCmdFocusPane + uint32_t(pane - 1)});
    }
    return menus;
}

} // namespace

void MainMenus::Build(QMenuBar *bar, const Send &send)
{
    for (const Menu &menu : Table()) {
        QMenu *added = bar->addMenu(menu.title);
        added->setObjectName(menu.title);
        int pane = 0;
        for (const Item &item : menu.items) {
            if (item.label == nullptr && item.code < kCmdFocusPane) {
                added->addSeparator();
                continue;
            }
            const QString label = item.label != nullptr ? QString(item.label)
                                                        : QString("Pane %1").arg(++pane);
            QAction *action = added->addAction(label);
            action->setShortcut(item.shortcut);
            const uint32_t code = item.code;
            QObject::connect(action, &QAction::triggered, bar, [send, code] { send(code); });
            if (code == kCmdHiddenFiles) {
                action->setObjectName(kHiddenFilesItem);
                action->setCheckable(true);
                action->setChecked(true);
                QObject::connect(added, &QMenu::aboutToShow, bar, [send] {
                    send(kMsgViewMenuShowing);
                });
            }
        }
    }
}

QMenu *MainMenus::AddOnsMenu(QMenuBar *bar)
{
    return bar->findChild<QMenu *>("Add-Ons");
}

} // namespace kestrin
