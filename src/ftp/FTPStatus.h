#pragma once

#include "platform/Handler.h"

#include <QWidget>

namespace kestrin {

class StatusLog;

// The "Status" window: the log lines of an FTP conversation (603 messages),
// newest at the bottom.
//
// GUI thread only.
class FTPStatus : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Shows itself centred on `frame`.
    explicit FTPStatus(const QRect &frame, QWidget *owner = nullptr);

    void MessageReceived(platform::Message &message) override;

private:
    StatusLog *fLog;
};

} // namespace kestrin
