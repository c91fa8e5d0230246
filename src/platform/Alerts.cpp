#include "platform/Alerts.h"

#include "platform/MessageBoxSink.h"

#include <atomic>

namespace platform {

namespace {

std::atomic<AlertSink *> gSink{nullptr};

} // namespace

int Alerts::Go(const Alert &alert)
{
    if (AlertSink *sink = gSink.load())
        return sink->Show(alert);
    static MessageBoxSink messageBoxes;
    return messageBoxes.Show(alert);
}

AlertSink *Alerts::SetSink(AlertSink *sink)
{
    return gSink.exchange(sink);
}

} // namespace platform
