#pragma once

#include "platform/Message.h"

#include <string>
#include <vector>

class QMenu;
class QString;
class QWidget;

namespace kestrin {

class DirPane;

// The main window's commands that take the focused pane to a place it
// showed or that the user keeps: Back, Forward and the menu of recent places
// (the pane's history), the hotlist's menu, adding to it and its edit
// window.
//
// GUI thread only.
class PlaceCommands
{
public:
    // True when the message is one of them (acted on when there is a pane).
    // `window` is the main window, which owns the menus and windows opened.
    static bool Handle(const platform::Message &message, DirPane *pane, QWidget *window);
    // Keeps the history of every pane in Kestrin's own file.
    static void SaveHistories(const std::vector<DirPane *> &panes);

private:
    static void Back(DirPane &pane);
    static void Forward(DirPane &pane);
    static void ShowRecent(DirPane &pane, QWidget *window);
    static void ShowHotlist(DirPane &pane, QWidget *window);
    static void AddToHotlist(DirPane &pane);
    // A pop-up menu of places, gone once closed.
    static QMenu *PopUp(QWidget *window);
    // An item that takes the pane to `place`.
    static void AddPlace(QMenu &menu, DirPane &pane, const QString &text, const std::string &place);
};

} // namespace kestrin
