#pragma once

#include "platform/Handler.h"

#include <QString>
#include <QWidget>
#include <cstdint>

class QCheckBox;
class QLineEdit;

namespace kestrin {

// The prompt's buttons, and the "button" number each reports.
inline constexpr uint32_t kMsgGetTextButton1 = 200; // reports the text
inline constexpr uint32_t kMsgGetTextButton2 = 201; // reports ""
inline constexpr uint32_t kMsgGetTextButton3 = 202; // reports ""

// A prompt that does not block its caller: a label, a text field and one to
// three buttons. A button delivers a message to the target and closes the
// window, which deletes itself. The message's what is the caller's reply
// code, with "title" (the window's title), "text" (the typed text for the
// first button, "" for the others) and "button" (int8: 0, 1 or 2).
//
// The window blocks input to Kestrin's other windows while it is shown.
// Create it with new; it owns itself from then on. GUI thread only; the
// target must outlive the window.
class GetTextWin : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // `frame` places the window and gives its least width; the window grows
    // to fit its buttons. The second and third buttons exist only when
    // their labels are not empty.
    GetTextWin(const QRect &frame,
               const QString &title,
               platform::Handler *target,
               const QString &prompt,
               const QString &text,
               int32_t replyCode,
               const QString &button1,
               const QString &button2 = QString(),
               const QString &button3 = QString());
    ~GetTextWin() override;

    // A check box under the text field; the first button's message then
    // carries its state as the bool "checked". Call before the prompt is
    // shown.
    void AddCheckBox(const QString &label, bool checked);

    void MessageReceived(platform::Message &message) override;

private:
    QString fTitle;
    QLineEdit *fText; // child of this window
    QCheckBox *fCheck = nullptr; // child of this window, when there is one
    platform::Handler *fTarget;
    int32_t fReplyCode;
};

} // namespace kestrin
