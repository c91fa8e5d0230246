#pragma once

#include <ctime>
#include <string>
#include <sys/types.h>

namespace kestrin {

// The texts every view of an entry shows the same way: the list rows, the
// information window and the permissions window.
class EntryTexts
{
public:
    // The nine-character permission text of a mode: "rwxr-xr--".
    static std::string PermissionText(mode_t mode);
    // A local time through strftime, at most 255 characters.
    static std::string DateText(time_t time, const std::string &format);
};

} // namespace kestrin
