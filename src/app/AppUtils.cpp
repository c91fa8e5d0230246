#include "app/AppUtils.h"

#include "app/AppInfo.h"
#include "platform/Alerts.h"
#include "platform/File.h"
#include "platform/Paths.h"
#include "platform/VolumeRoster.h"

#include <atomic>
#include <cstring>

namespace kestrin {

std::unique_ptr<platform::Volume> GetVolume(const char *path)
{
    const std::optional<platform::Volume> volume = strcmp(path, "/boot") == 0
                                                       ? platform::VolumeRoster::BootVolume()
                                                       : platform::VolumeRoster::ForMountPath(path);
    return volume ? std::make_unique<platform::Volume>(*volume) : nullptr;
}

bool valid_file(const char *path)
{
    return platform::File(path, B_READ_ONLY).InitCheck() == B_OK;
}

status_t get_app_from_sig(const char *signature, char *pathOut)
{
    if (!signature || !strchr(signature, '/') || !pathOut)
        return B_BAD_VALUE;
    if (strcmp(signature, kAppSignature) != 0)
        return B_ENTRY_NOT_FOUND;
    const std::string path = platform::ExecutablePath();
    if (path.empty() || path.size() >= B_PATH_NAME_LENGTH)
        return B_BAD_VALUE;
    strcpy(pathOut, path.c_str());
    return B_OK;
}

void MsgBox(const char *text, alert_type type)
{
    platform::Alerts::Go(MsgBoxAlert(text, type));
}

platform::Alert MsgBoxAlert(const char *text, alert_type type)
{
    return {"foo", text, {"OK"}, type, B_WIDTH_AS_USUAL};
}

int MessageBox(const char *text,
               const char *title,
               const char *button0,
               const char *button1,
               const char *button2)
{
    platform::Alert alert{title, text, {}, B_INFO_ALERT, B_WIDTH_AS_USUAL};
    for (const char *label : {button0, button1, button2}) {
        if (label)
            alert.buttons.emplace_back(label);
    }
    return platform::Alerts::Go(alert);
}

namespace {

std::atomic<bool> gCaseSensitiveSort{false};

} // namespace

bool GetbCaseSensitiveSort()
{
    return gCaseSensitiveSort.load(std::memory_order_relaxed);
}

void SetbCaseSensitiveSort(bool caseSensitive)
{
    gCaseSensitiveSort.store(caseSensitive, std::memory_order_relaxed);
}

} // namespace kestrin
