#include "mainwindow/FirstPaint.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

namespace kestrin {

FirstPaint::FirstPaint(QWidget *watched)
    : QObject(watched)
{
    // Whichever widget of the window paints first: opaque children keep the
    // window itself, or a container they cover, from being painted at all.
    QCoreApplication::instance()->installEventFilter(this);
}

bool FirstPaint::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint && !fSeen && watched->isWidgetType()
        && static_cast<QWidget *>(watched)->window() == static_cast<QWidget *>(parent())->window()) {
        fSeen = true;
        QCoreApplication::instance()->removeEventFilter(this);
        // The paint event comes before the window's backing store reaches
        // the screen; the next turn of the event loop comes after.
        QTimer::singleShot(0, this, [this] {
            fDone = true;
            emit Painted();
        });
    }
    return QObject::eventFilter(watched, event);
}

} // namespace kestrin
