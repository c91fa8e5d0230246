#pragma once

#include "fileops/ModalDlg.h"

#include <cstdint>

class QLabel;
class QLineEdit;

namespace kestrin {

// A modal prompt for one line of text, written into the caller's buffer on
// OK. The buffer's text is the initial text.
//
// The copy is strncpy's: a text of `capacity` bytes or more fills the buffer
// with no terminating zero, so callers size the buffer one byte larger than
// `capacity`.
class mdlGetTextDlg : public ModalDlg
{
    Q_OBJECT

public:
    mdlGetTextDlg(const QString &prompt, char *buffer, int32_t capacity, QWidget *parent = nullptr);
    ~mdlGetTextDlg() override;

    bool ValidateData() override;

private:
    QLabel *fLabel;   // child of the background
    QLineEdit *fText; // child of the background
    char *fBuffer;    // the caller's
    int32_t fCapacity;
};

} // namespace kestrin
