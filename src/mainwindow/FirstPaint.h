#pragma once

#include <QObject>

class QWidget;

namespace kestrin {

// Tells once that a window has been painted for the first time: Painted() is
// emitted from the event loop after the paint that showed it, so what is
// connected to it never delays that paint. Work that a start-up can do
// without (scanning add-ons, loading icons) waits for it.
//
// GUI thread only. A child of a widget of the window it watches.
class FirstPaint : public QObject
{
    Q_OBJECT

public:
    explicit FirstPaint(QWidget *watched);

    bool Done() const { return fDone; }

signals:
    void Painted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool fSeen = false;
    bool fDone = false;
};

} // namespace kestrin
