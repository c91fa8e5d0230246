#pragma once

#include "platform/Errors.h"

#include <string>
#include <sys/stat.h>

namespace platform {

// Path text and the two questions every layer asks of a path, in one place.
// The text helpers never touch the file system; they take absolute paths
// without a trailing "/", the form Entry keeps.

// "folder/name"; no doubled "/" under the root folder.
std::string JoinPath(const std::string &folder, const std::string &name);
// The folder a path is in ("/" for a top-level entry), and its leaf in
// `leaf` when given. A path without a "/" is a leaf in "/".
std::string ParentPath(const std::string &path, std::string *leaf = nullptr);
std::string LeafName(const std::string &path);

// Whether the path leads to a folder, links followed.
bool IsFolder(const std::string &path);
// The stat data of what the path leads to (links followed): B_OK or why not.
status_t StatPath(const std::string &path, struct stat *info);
// The path with every link and "." or ".." resolved (realpath).
status_t RealPath(const std::string &path, std::string *real);
// Sets the permission bits of what the path leads to (a link's target: a
// link has no permissions of its own on Linux).
status_t SetPermissions(const std::string &path, mode_t mode);

} // namespace platform
