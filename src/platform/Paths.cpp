#include "platform/Paths.h"

#include "platform/PathNames.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

// A variable that is set to an absolute path; anything else counts as unset.
bool AbsoluteEnv(const char *name, std::string *value)
{
    const char *raw = getenv(name);
    if (!raw || raw[0] != '/')
        return false;
    *value = raw;
    while (value->size() > 1 && value->back() == '/')
        value->pop_back();
    return true;
}

bool XdgDir(const char *variable, const char *homeRelative, std::string *path)
{
    if (AbsoluteEnv(variable, path))
        return true;
    std::string home;
    if (!AbsoluteEnv("HOME", &home))
        return false;
    *path = (home == "/" ? std::string() : home) + homeRelative;
    return true;
}

// mkdir -p with owner-only folders; the umask is process-wide, so it is not
// touched here.
status_t MakeFolders(const std::string &path)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string prefix = path.substr(0, slash);
        if (mkdir(prefix.c_str(), 0700) != 0 && errno != EEXIST)
            return LastError();
        if (slash == std::string::npos)
            break;
    }
    return IsFolder(path) ? B_OK : B_NOT_A_DIRECTORY;
}

// Installed, a folder of the prefix; run from the build tree, the tree's own
// (`built`); else the prefix the build was configured for.
std::string PrefixFolder(const std::string &relative, const std::string &built)
{
    const std::string prefix = InstallPrefix();
    if (!prefix.empty())
        return prefix + "/" + relative;
    if (IsFolder(built))
        return built;
    return std::string(KESTRIN_INSTALL_PREFIX) + "/" + relative;
}

} // namespace

std::string InstallPrefix()
{
    const std::string exe = ExecutablePath();
    const size_t slash = exe.rfind('/');
    if (slash == std::string::npos || slash == 0)
        return std::string();
    const std::string bin = exe.substr(0, slash);
    const std::string prefix = bin.substr(0, bin.rfind('/'));
    return IsFolder(prefix + "/share/kestrin") ? prefix : std::string();
}

status_t FindDirectory(DirectoryWhich which, std::string *path, bool create)
{
    std::string result;
    bool known = true;
    switch (which) {
    case DirectoryWhich::Home:
        known = AbsoluteEnv("HOME", &result);
        break;
    case DirectoryWhich::UserSettings:
        known = XdgDir("XDG_CONFIG_HOME", "/.config", &result);
        break;
    case DirectoryWhich::Trash:
        known = XdgDir("XDG_DATA_HOME", "/.local/share", &result);
        result += "/Trash";
        break;
    case DirectoryWhich::UserAddOns:
        known = XdgDir("XDG_DATA_HOME", "/.local/share", &result);
        result += "/kestrin/add-ons";
        break;
    case DirectoryWhich::SystemAddOns:
        result = PrefixFolder("lib/kestrin/add-ons", KESTRIN_BUILD_ADDONS_DIR);
        break;
    case DirectoryWhich::Help:
        result = PrefixFolder("share/kestrin/help", KESTRIN_BUILD_HELP_DIR);
        break;
    case DirectoryWhich::Icons:
        result = PrefixFolder("share/icons/hicolor", KESTRIN_BUILD_ICONS_DIR);
        break;
    case DirectoryWhich::UserData:
        known = XdgDir("XDG_DATA_HOME", "/.local/share", &result);
        break;
    case DirectoryWhich::Transfers:
        // On the home disk rather than /tmp, which is often a small tmpfs:
        // an archive unpacked on its way to a server can be big.
        known = XdgDir("XDG_CACHE_HOME", "/.cache", &result);
        result += "/kestrin/transfers";
        break;
    }
    if (!known)
        return B_ENTRY_NOT_FOUND;
    if (create) {
        if (const status_t status = MakeFolders(result); status != B_OK)
            return status;
    }
    *path = result;
    return B_OK;
}

std::string ExecutablePath()
{
    std::error_code error;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : exe.string();
}

} // namespace platform
