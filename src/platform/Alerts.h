#pragma once

#include "platform/Alert.h"

#include <optional>
#include <string>

namespace platform {

// Whatever answers alerts: the message boxes of an application with windows,
// or a test's recorder. Without one an alert is a line on standard error.
class AlertSink
{
public:
    virtual ~AlertSink() = default;
    // Returns the index of the pressed button.
    virtual int Show(const Alert &alert) = 0;
    // Asks for a secret (a password, a passphrase) in a field that hides
    // what is typed; nullopt when the user declines. A sink that cannot ask
    // declines.
    virtual std::optional<std::string> AskSecret(const Alert &alert);
};

// Every alert and message box of Kestrin goes through here. Go() may be called
// from any thread; the caller waits until the alert is answered. On the GUI
// thread the alert is shown modally; from another thread it is handed to the
// GUI thread, which never waits on the caller.
class Alerts
{
public:
    static int Go(const Alert &alert);
    // Asks for a secret, from any thread, as Go shows an alert: the text
    // says what is asked, the first button declines and the last one gives.
    static std::optional<std::string> AskSecret(const Alert &alert);

    // Replaces the sink (nullptr: standard error) and returns the previous
    // one. The sink must outlive its installation.
    static AlertSink *SetSink(AlertSink *sink);
};

} // namespace platform
