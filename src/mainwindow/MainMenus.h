#pragma once

#include <cstdint>
#include <functional>

class QMenu;
class QMenuBar;

namespace kestrin {

// The main window's menu bar: every menu, item, shortcut and command code,
// in the order the window has always had them. Shortcuts use Ctrl, the
// platform's command key here.
class MainMenus
{
public:
    using Send = std::function<void(uint32_t code)>;

    // Fills the bar; every item hands its code to `send`.
    static void Build(QMenuBar *bar, const Send &send);
    // The "Add-Ons" menu of a bar that Build filled.
    static QMenu *AddOnsMenu(QMenuBar *bar);
};

} // namespace kestrin
