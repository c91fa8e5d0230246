#pragma once

#include "platform/Errors.h"

namespace platform {

class Handler;

// Tells handlers when volumes come and go. The kernel flags every change of
// the mount table on /proc/self/mountinfo (POLLPRI), watched on the GUI
// thread through a QSocketNotifier; the device numbers of
// VolumeRoster::MountedVolumes() before and after tell what changed.
//
// Each change reaches every watching handler as a B_NODE_MONITOR message
// (NodeMonitor.h), delivered synchronously (MessageReceived is called
// directly) on the GUI thread; the unmounts of one change come before its
// mounts:
//
//   B_DEVICE_UNMOUNTED  "device" (int32): the volume that went
//   B_DEVICE_MOUNTED    "new device" (int32): the volume that came;
//                       "device" (int32): the volume holding the folder it was
//                       mounted on, 0 when that cannot be told
//
// Both also carry "path" (string), the mount point: an anonymous device
// number freed by one volume is handed to the next, so a device number alone
// may name two volumes in a row.
//
// Device numbers are those of stat's st_dev, as int32 like NodeMonitor's.
// A volume is a device: a bind mount of a mounted volume is no change.
//
// Handlers may start and stop watching, their own watch or others', from
// MessageReceived; a handler that stops gets nothing more, not even the rest
// of the change being delivered. GUI thread only.
class MountWatcher
{
public:
    // B_OK (watching twice is one watch), B_BAD_VALUE for no handler,
    // B_NO_INIT without a QCoreApplication, B_NOT_ALLOWED off the GUI thread,
    // or why /proc/self/mountinfo could not be opened.
    static status_t Watch(Handler *target);
    // Call it before the handler goes.
    static void StopWatching(Handler *target);
    static bool IsWatching(Handler *target);
};

} // namespace platform
