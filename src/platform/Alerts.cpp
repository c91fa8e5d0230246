#include "platform/Alerts.h"

#include <atomic>
#include <cstdio>

namespace platform {

namespace {

std::atomic<AlertSink *> gSink{nullptr};

} // namespace

int Alerts::Go(const Alert &alert)
{
    if (AlertSink *sink = gSink.load())
        return sink->Show(alert);
    // Nothing to show it in (a command-line tool): say it, and take the
    // first button.
    fprintf(stderr, "%s: %s\n", alert.title.c_str(), alert.text.c_str());
    return 0;
}

std::optional<std::string> AlertSink::AskSecret(const Alert &alert)
{
    Show(alert);
    return std::nullopt;
}

std::optional<std::string> Alerts::AskSecret(const Alert &alert)
{
    if (AlertSink *sink = gSink.load())
        return sink->AskSecret(alert);
    fprintf(stderr, "%s: %s\n", alert.title.c_str(), alert.text.c_str());
    return std::nullopt;
}

AlertSink *Alerts::SetSink(AlertSink *sink)
{
    return gSink.exchange(sink);
}

} // namespace platform
