#pragma once

#include "platform/Alert.h"
#include "platform/Errors.h"
#include "platform/Volume.h"

#include <memory>

namespace kestrin {

inline constexpr size_t B_PATH_NAME_LENGTH = 1024;

// The volume mounted at exactly `path`; "/boot", the boot volume of old, is the
// root volume here. A path inside a volume gives null.
std::unique_ptr<platform::Volume> GetVolume(const char *path);

// True when a file (not a folder) at `path` opens for reading.
bool valid_file(const char *path);

// Linux keeps no registry of application signatures: Kestrin's own signature
// names the running executable, written into `pathOut` (B_PATH_NAME_LENGTH
// bytes); any other signature is B_ENTRY_NOT_FOUND, and an empty or
// malformed one B_BAD_VALUE.
status_t get_app_from_sig(const char *signature, char *pathOut);

// An alert titled "foo" with one button "OK"; returns when it is dismissed.
void MsgBox(const char *text, alert_type type = B_INFO_ALERT);
// The alert MsgBox shows, for code that hands it on rather than showing it.
platform::Alert MsgBoxAlert(const char *text, alert_type type = B_INFO_ALERT);

// An information alert with up to three buttons (null for none); returns the
// index of the pressed one.
int MessageBox(const char *text,
               const char *title,
               const char *button0,
               const char *button1 = nullptr,
               const char *button2 = nullptr);

// Whether names sort case-sensitively; read and written from any thread.
bool GetbCaseSensitiveSort();
void SetbCaseSensitiveSort(bool caseSensitive);

} // namespace kestrin
