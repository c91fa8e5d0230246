#include "fileops/ModalDlg.h"

#include "widgets/PlaceOnScreen.h"

#include <QScreen>
#include <cmath>

namespace kestrin {

namespace {

constexpr int kWidth = 250;
constexpr int kHeight = 75;

// Half the spare room, rounded down even when the screen is the smaller.
int CentredStart(int screenStart, int screenSize, int windowSize)
{
    return screenStart + int(std::floor((screenSize - windowSize) / 2.0));
}

} // namespace

ModalDlg::ModalDlg(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setModal(true);
    setWindowTitle(QString());
    QRect screen(0, 0, kWidth, kHeight);
    if (const QScreen *shown = ScreenFor(parent))
        screen = shown->geometry();
    // Placing the dialog ourselves also keeps QDialog from centring it on
    // its parent when shown.
    setFixedSize(kWidth, kHeight);
    PlaceOnScreen(this,
                  QRect(CentredStart(screen.x(), screen.width(), kWidth),
                        CentredStart(screen.y(), screen.height(), kHeight),
                        kWidth,
                        kHeight),
                  parent);
}

ModalDlg::~ModalDlg() = default;

uint32_t ModalDlg::DoModal()
{
    fResult = kMsgModalCancel;
    exec();
    return fResult;
}

void ModalDlg::EndDialog(uint32_t code)
{
    fResult = code;
    QDialog::done(code == kMsgModalOk ? Accepted : Rejected);
}

bool ModalDlg::ValidateData()
{
    return true;
}

void ModalDlg::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgModalCancel:
        EndDialog(kMsgModalCancel);
        break;
    case kMsgModalOk:
        if (ValidateData())
            EndDialog(kMsgModalOk);
        break;
    default:
        break;
    }
}

void ModalDlg::accept()
{
    platform::Message ok(kMsgModalOk);
    Dispatch(ok);
}

void ModalDlg::reject()
{
    platform::Message cancel(kMsgModalCancel);
    Dispatch(cancel);
}

} // namespace kestrin
