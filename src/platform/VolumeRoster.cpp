#include "platform/VolumeRoster.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <sys/sysmacros.h>

namespace platform {

namespace {

struct Mount
{
    long id = 0;
    long parent = 0;
    dev_t device = 0;
    std::string root;
    std::string path;
    std::string fileSystem;
    std::string source;
    bool readOnly = false;
};

// mountinfo writes space, tab, newline and backslash as \ooo.
std::string Unescape(const std::string &field)
{
    std::string text;
    for (size_t i = 0; i < field.size(); i++) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const char a = field[i + 1], b = field[i + 2], c = field[i + 3];
            if (a >= '0' && a <= '3' && b >= '0' && b <= '7' && c >= '0' && c <= '7') {
                text += char(((a - '0') << 6) | ((b - '0') << 3) | (c - '0'));
                i += 3;
                continue;
            }
        }
        text += field[i];
    }
    return text;
}

bool HasOption(const std::string &options, const char *option)
{
    std::istringstream list(options);
    std::string item;
    while (std::getline(list, item, ','))
        if (item == option)
            return true;
    return false;
}

// One line: "id parent major:minor root mount-point options [optional...] -
// fstype source super-options".
bool ParseLine(const std::string &line, Mount *mount)
{
    std::istringstream input(line);
    std::vector<std::string> fields{std::istream_iterator<std::string>(input),
                                    std::istream_iterator<std::string>()};
    size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-")
        separator++;
    if (separator + 2 >= fields.size())
        return false;

    unsigned major = 0, minor = 0;
    if (sscanf(fields[2].c_str(), "%u:%u", &major, &minor) != 2)
        return false;
    try {
        mount->id = std::stol(fields[0]);
        mount->parent = std::stol(fields[1]);
    } catch (const std::exception &) {
        return false;
    }
    mount->device = makedev(major, minor);
    mount->root = Unescape(fields[3]);
    mount->path = Unescape(fields[4]);
    mount->fileSystem = Unescape(fields[separator + 1]);
    mount->source = Unescape(fields[separator + 2]);
    mount->readOnly = HasOption(fields[5], "ro")
                      || (separator + 3 < fields.size() && HasOption(fields[separator + 3], "ro"));
    return true;
}

std::vector<Mount> VisibleMounts(const std::string &mountInfo)
{
    std::vector<Mount> mounts;
    std::istringstream lines(mountInfo);
    std::string line;
    while (std::getline(lines, line)) {
        Mount mount;
        if (ParseLine(line, &mount))
            mounts.push_back(std::move(mount));
    }

    // A mount stacked on the same path as its parent hides that parent.
    std::set<long> covered;
    for (const Mount &mount : mounts)
        for (const Mount &other : mounts)
            if (other.id == mount.parent && other.path == mount.path)
                covered.insert(other.id);

    std::vector<Mount> visible;
    for (Mount &mount : mounts)
        if (!covered.count(mount.id))
            visible.push_back(std::move(mount));
    return visible;
}

Volume ToVolume(const Mount &mount)
{
    return Volume(mount.device, mount.path, mount.fileSystem, mount.source, mount.readOnly);
}

std::string ReadMountInfo()
{
    std::ifstream file("/proc/self/mountinfo");
    return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace

std::vector<Volume> VolumeRoster::ParseMounts(const std::string &mountInfo)
{
    std::vector<Volume> volumes;
    for (const Mount &mount : VisibleMounts(mountInfo))
        volumes.push_back(ToVolume(mount));
    return volumes;
}

std::vector<Volume> VolumeRoster::ParseVolumes(const std::string &mountInfo)
{
    const std::vector<Mount> mounts = VisibleMounts(mountInfo);
    std::vector<Volume> volumes;
    std::set<dev_t> seen;
    for (size_t i = 0; i < mounts.size(); i++) {
        if (seen.count(mounts[i].device))
            continue;
        seen.insert(mounts[i].device);
        // A bind mount of one folder can come first (a container's
        // /etc/hosts); the mount of the whole file system names it better.
        const Mount *chosen = &mounts[i];
        for (size_t j = i; j < mounts.size() && chosen->root != "/"; j++)
            if (mounts[j].device == mounts[i].device && mounts[j].root == "/")
                chosen = &mounts[j];
        volumes.push_back(ToVolume(*chosen));
    }
    return volumes;
}

std::vector<Volume> VolumeRoster::MountedVolumes()
{
    return ParseVolumes(ReadMountInfo());
}

std::optional<Volume> VolumeRoster::BootVolume()
{
    return ForMountPath("/");
}

std::optional<Volume> VolumeRoster::ForDevice(dev_t device)
{
    for (Volume &volume : MountedVolumes())
        if (volume.Device() == device)
            return volume;
    return std::nullopt;
}

std::optional<Volume> VolumeRoster::ForMountPath(const std::string &path)
{
    for (Volume &volume : ParseMounts(ReadMountInfo()))
        if (volume.MountPath() == path)
            return volume;
    return std::nullopt;
}

} // namespace platform
