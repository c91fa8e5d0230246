#include "panes/EditControl.h"

#include "panes/PaneMessages.h"
#include "platform/Handler.h"

#include <QKeyEvent>

namespace kestrin {

namespace {

// Names are bytes on disk; 1,024 of them is the most a path buffer held.
constexpr int kMaxNameBytes = 1024;

} // namespace

EditControl::EditControl(const QString &text,
                         int32_t row,
                         platform::Handler *target,
                         QWidget *parent)
    : QLineEdit(text, parent)
    , fRow(row)
    , fTarget(target)
{
    setMaxLength(kMaxNameBytes);
    setFrame(false);
}

void EditControl::Finish(uint32_t what)
{
    // Return followed by the focus loss that removing the field causes must
    // not answer twice.
    if (fFinished || fTarget == nullptr)
        return;
    fFinished = true;
    platform::Message message(what);
    if (what == kMsgRenameAccept)
        message.AddInt32("pos", fRow);
    // Which field it was: an answer that arrives after the list has opened
    // another field is about the old one.
    message.AddPointer("field", this);
    fTarget->Post(message);
}

void EditControl::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Finish(kMsgRenameAccept);
        return;
    case Qt::Key_Escape:
        Finish(kMsgRenameCancel);
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void EditControl::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    Finish(kMsgRenameCancel);
}

} // namespace kestrin
