#include "panes/FolderErrors.h"

namespace kestrin {

std::string FolderErrors::Text(status_t status, const std::string &folder)
{
    switch (status) {
    case B_NAME_TOO_LONG:
        return "The name returned for an entry is too long.";
    case B_NOT_A_DIRECTORY:
        return "The directory, " + folder + ", is not valid.\nThe volume may not be mounted.";
    case B_LINK_LIMIT:
        return "Link limit exceeded.  It is possible that a cyclic link exists in your file "
               "system.";
    case B_BAD_VALUE:
        return "Invalid input value, or the directory object was not initialized properly.";
    case B_FILE_ERROR:
        return "The directory object was not initialized properly.";
    case B_NO_MEMORY:
        return "Not enough memory for this operation.";
    case B_ERROR:
        return "Some unspecific error.";
    default:
        return {};
    }
}

} // namespace kestrin
