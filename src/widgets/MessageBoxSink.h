#pragma once

#include "platform/Alerts.h"

namespace kestrin {

// Shows alerts as QMessageBox windows on the GUI thread. The platform layer
// knows no widgets: an application with windows installs this sink at its
// start, and without it alerts are lines on standard error.
class MessageBoxSink : public platform::AlertSink
{
public:
    // Makes the message boxes answer every alert from now on (a test's
    // recorder still takes over while it lives).
    static void Install();

    int Show(const platform::Alert &alert) override;
    std::optional<std::string> AskSecret(const platform::Alert &alert) override;

private:
    static int ShowOnGuiThread(const platform::Alert &alert);
    static std::optional<std::string> AskOnGuiThread(const platform::Alert &alert);
};

} // namespace kestrin
