#pragma once

#include "platform/Handler.h"
#include "platform/TypeCodes.h"

#include <QDialog>
#include <cstdint>

namespace kestrin {

inline constexpr uint32_t kMsgModalOk = platform::FourCC("mDOK");
inline constexpr uint32_t kMsgModalCancel = platform::FourCC("mDCL");

// A small fixed dialog, centred on the primary screen, that DoModal() waits
// for. The wait runs a nested event loop, so the caller's windows keep
// painting while the user answers.
//
// The dialog only hides itself when it ends: whoever made it deletes it, so a
// caller may still read its controls after DoModal() returns.
//
// GUI thread only.
class ModalDlg : public QDialog, public platform::Handler
{
    Q_OBJECT

public:
    explicit ModalDlg(QWidget *parent = nullptr);
    ~ModalDlg() override;

    // Shows the dialog and returns the code that ended it, kMsgModalOk or
    // kMsgModalCancel.
    uint32_t DoModal();
    void EndDialog(uint32_t code);
    uint32_t Result() const { return fResult; }

    // Asked before OK ends the dialog; false keeps it open.
    virtual bool ValidateData();

    // kMsgModalOk and kMsgModalCancel end the dialog; anything else is dropped.
    void MessageReceived(platform::Message &message) override;

    // QDialog's own ways to end a dialog (closing it, a subclass without
    // buttons of its own) come through these as OK and Cancel.
    void accept() override;
    void reject() override;

private:
    uint32_t fResult = kMsgModalCancel;
};

} // namespace kestrin
