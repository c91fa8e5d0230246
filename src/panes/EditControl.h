#pragma once

#include <QLineEdit>
#include <cstdint>

namespace platform {
class Handler;
}

namespace kestrin {

// The one-line field of an in-place rename. It knows the row it renames and
// tells the list how the edit ended: Return posts kMsgRenameAccept with
// "pos" = the row, Escape and losing the focus post kMsgRenameCancel. The
// messages are posted, not delivered at once, because the list answers by
// deleting the field.
//
// GUI thread only.
class EditControl : public QLineEdit
{
    Q_OBJECT

public:
    EditControl(const QString &text, int32_t row, platform::Handler *target, QWidget *parent);

    int32_t Row() const { return fRow; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void Finish(uint32_t what);

    int32_t fRow;
    platform::Handler *fTarget;
    bool fFinished = false;
};

} // namespace kestrin
