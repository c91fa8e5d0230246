#pragma once

#include <QObject>
#include <QPointer>

class QAbstractButton;
class QWidget;

namespace kestrin {

// The keys every secondary window of Kestrin answers, the way users of
// desktop applications expect them, set up in one place:
// - the first field to fill has the keyboard focus whenever the window is
//   shown, with its text selected;
// - Return (or Enter) presses the focused push button (unless it opens a
//   menu), else the default button, the one the window's work ends with; in
//   a list it invokes the row, which the list does itself, and presses
//   nothing else;
// - Escape presses the cancel button, or closes the window when it has none;
// - Ctrl+W closes the window, unless the window's own menus offer Ctrl+W
//   already.
// A window that only an answer may end (not closable) leaves Escape without
// a cancel button, and Ctrl+W, alone.
//
// The conventions live on the window (as an event filter and a shortcut)
// and go with it. GUI thread only.
class WindowConventions : public QObject
{
    Q_OBJECT

public:
    struct Roles
    {
        QWidget *firstField = nullptr;
        QAbstractButton *defaultButton = nullptr;
        QAbstractButton *cancelButton = nullptr;
        bool closable = true;
    };

    static WindowConventions *Apply(QWidget *window, const Roles &roles);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    WindowConventions(QWidget *window, const Roles &roles);

    void FocusFirstField();
    bool ReturnPressed();
    bool EscapePressed();
    bool HasCloseKey() const;

    QWidget *fWindow; // the parent
    QPointer<QWidget> fFirstField;
    QPointer<QAbstractButton> fDefault;
    QPointer<QAbstractButton> fCancel;
    bool fClosable;
};

} // namespace kestrin
