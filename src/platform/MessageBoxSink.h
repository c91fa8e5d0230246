#pragma once

#include "platform/Alerts.h"

namespace platform {

// Shows alerts as QMessageBox windows on the GUI thread.
class MessageBoxSink : public AlertSink
{
public:
    int Show(const Alert &alert) override;

private:
    static int ShowOnGuiThread(const Alert &alert);
};

} // namespace platform
