#include "widgets/PlaceOnScreen.h"

#include <QApplication>
#include <QMargins>
#include <QScreen>
#include <QWidget>

namespace kestrin {

namespace {

// A frame for a window when no shown window tells what the window manager
// gives: a title bar and thin borders, on the large side.
constexpr QMargins kLikelyFrame(8, 40, 8, 8);

// What the window manager puts around a shown window: its title bar and
// borders. Nothing for a window that is not shown.
QMargins FrameOf(const QWidget *window)
{
    if (window == nullptr || !window->isVisible())
        return {};
    const QRect outer = window->frameGeometry();
    const QRect inner = window->geometry();
    return {inner.left() - outer.left(),
            inner.top() - outer.top(),
            outer.right() - inner.right(),
            outer.bottom() - inner.bottom()};
}

// The frame `window` has or will have: its own once shown, else that of
// the window it belongs to or of the window in front, which the same
// window manager decorates.
QMargins LikelyFrameOf(const QWidget *window, const QWidget *anchor)
{
    for (const QWidget *each :
         {window, anchor, static_cast<const QWidget *>(QApplication::activeWindow())}) {
        if (each != nullptr && each->window()->isVisible())
            return FrameOf(each->window());
    }
    return kLikelyFrame;
}

const QWidget *AnchorOf(const QWidget *window, const QWidget *anchor)
{
    if (anchor != nullptr)
        return anchor;
    if (window->parentWidget() != nullptr)
        return window->parentWidget();
    return QApplication::activeWindow();
}

} // namespace

const QScreen *ScreenFor(const QWidget *anchor, const QRect &wanted)
{
    if (anchor != nullptr) {
        if (const QScreen *screen = anchor->window()->screen())
            return screen;
    }
    if (wanted.isValid()) {
        if (const QScreen *screen = QGuiApplication::screenAt(wanted.center()))
            return screen;
    }
    return QGuiApplication::primaryScreen();
}

QRect ScreenRoom(const QWidget *anchor, const QRect &wanted)
{
    const QScreen *screen = ScreenFor(anchor, wanted);
    return screen != nullptr ? screen->availableGeometry() : QRect();
}

void PlaceOnScreen(QWidget *window, const QRect &wanted, const QWidget *anchor)
{
    anchor = AnchorOf(window, anchor);
    const QRect room = ScreenRoom(anchor, wanted);
    if (room.isEmpty()) {
        window->setGeometry(wanted);
        return;
    }
    const QMargins frame = LikelyFrameOf(window, anchor);
    // Where a window is put before it is shown, some window managers put
    // its frame's corner rather than its own: room for the frame below and
    // to the right as well, then.
    QMargins around = frame;
    if (!window->isVisible())
        around += QMargins(0, 0, frame.left(), frame.top());
    const QSize size = wanted.size().boundedTo(room.size().shrunkBy(around));
    QRect outer(wanted.topLeft() - QPoint(frame.left(), frame.top()), size.grownBy(around));
    if (outer.right() > room.right())
        outer.moveRight(room.right());
    if (outer.bottom() > room.bottom())
        outer.moveBottom(room.bottom());
    if (outer.left() < room.left())
        outer.moveLeft(room.left());
    if (outer.top() < room.top())
        outer.moveTop(room.top());
    window->setGeometry(QRect(outer.topLeft() + QPoint(frame.left(), frame.top()), size));
}

} // namespace kestrin
