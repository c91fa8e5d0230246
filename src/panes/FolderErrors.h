#pragma once

#include "platform/Errors.h"

#include <string>

namespace kestrin {

// What the user is told when a folder cannot be opened or read to its end.
class FolderErrors
{
public:
    // The text of the stop box for a status; empty for the statuses that
    // show no box (the normal end of a folder among them).
    static std::string Text(status_t status, const std::string &folder);
};

} // namespace kestrin
