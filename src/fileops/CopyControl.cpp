#include "fileops/CopyControl.h"

#include "platform/Alerts.h"

namespace kestrin {

int32_t CopyControl::ReportError(CopyControl *control, const platform::Alert &alert)
{
    return control ? control->FileError(alert) : platform::Alerts::Go(alert);
}

} // namespace kestrin
