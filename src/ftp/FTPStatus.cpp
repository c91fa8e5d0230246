#include "ftp/FTPStatus.h"

#include "ftp/FtpMessages.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/StatusLog.h"
#include "widgets/WindowConventions.h"

#include <QVBoxLayout>

namespace kestrin {

namespace {

constexpr int kWidth = 400;
constexpr int kHeight = 300;

} // namespace

FTPStatus::FTPStatus(const QRect &frame, QWidget *owner)
    : QWidget(owner, Qt::Window)
{
    setWindowTitle("Status");
    PlaceOnScreen(this,
                  QRect(frame.center() - QPoint(kWidth / 2, kHeight / 2), QSize(kWidth, kHeight)));

    auto *container = new QWidget(this);
    container->setObjectName("ScrollContainer");
    fLog = new StatusLog(container);
    fLog->setObjectName("StatusWindow");
    fLog->setAccessibleName("FTP log");
    auto *inner = new QVBoxLayout(container);
    inner->setContentsMargins(0, 0, 0, 0);
    inner->addWidget(fLog);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(container);
    WindowConventions::Apply(this, {.firstField = fLog});
    show();
}

void FTPStatus::MessageReceived(platform::Message &message)
{
    std::string text;
    if (message.what == kMsgFtpStatus && message.FindString("status", &text) == B_OK)
        fLog->Append(text);
    else
        Handler::MessageReceived(message);
}

} // namespace kestrin
