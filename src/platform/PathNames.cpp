#include "platform/PathNames.h"

#include <cstdlib>

namespace platform {

std::string JoinPath(const std::string &folder, const std::string &name)
{
    return folder == "/" ? "/" + name : folder + "/" + name;
}

std::string ParentPath(const std::string &path, std::string *leaf)
{
    const size_t slash = path.rfind('/');
    if (leaf != nullptr)
        *leaf = slash == std::string::npos ? path : path.substr(slash + 1);
    if (slash == std::string::npos || slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string LeafName(const std::string &path)
{
    std::string leaf;
    ParentPath(path, &leaf);
    return leaf;
}

bool IsFolder(const std::string &path)
{
    struct stat info;
    return StatPath(path, &info) == B_OK && S_ISDIR(info.st_mode);
}

status_t StatPath(const std::string &path, struct stat *info)
{
    return stat(path.c_str(), info) == 0 ? B_OK : LastError();
}

status_t RealPath(const std::string &path, std::string *real)
{
    char *resolved = realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return LastError();
    *real = resolved;
    free(resolved);
    return B_OK;
}

status_t SetPermissions(const std::string &path, mode_t mode)
{
    return chmod(path.c_str(), mode & 07777) == 0 ? B_OK : LastError();
}

} // namespace platform
