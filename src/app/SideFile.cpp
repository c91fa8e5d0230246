#include "app/SideFile.h"

#include "app/AppInfo.h"
#include "app/Profile.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/PathNames.h"

#include <algorithm>

namespace kestrin {

namespace {

// Generous for a long history and hotlist; a file any bigger is no file of
// ours and is not read past this.
constexpr size_t kMostBytes = 1024 * 1024;

std::string ReadWhole(const std::string &path)
{
    platform::File file(path, B_READ_ONLY);
    std::string bytes;
    if (file.InitCheck() != B_OK)
        return bytes;
    char chunk[4096];
    ssize_t got = 0;
    while (bytes.size() < kMostBytes && (got = file.Read(chunk, sizeof chunk)) > 0)
        bytes.append(chunk, size_t(got));
    return bytes;
}

// Writes `bytes` as the file `path` at once: under a temporary name in the
// same folder first, then renamed over the old file.
bool ReplaceWhole(const std::string &path, const std::string &bytes)
{
    platform::File file;
    std::string temporary;
    const std::string folder = platform::ParentPath(path);
    const std::string leaf = platform::LeafName(path);
    // mkstemp makes it owner-only.
    if (file.SetToTemporary(folder + "/." + leaf + ".XXXXXX", &temporary) != B_OK)
        return false;
    const bool written = file.Write(bytes.data(), bytes.size()) == ssize_t(bytes.size());
    file.Unset();
    platform::Entry entry(temporary);
    if (written && entry.MoveTo("", leaf.c_str(), true) == B_OK)
        return true;
    entry.Remove();
    return false;
}

} // namespace

SideFile SideFile::Read(const std::string &name)
{
    SideFile file;
    file.fName = name;
    const std::string path = GetSettingFullPath(kSettingsFolder, name);
    if (path.empty())
        return file;
    const std::string bytes = ReadWhole(path);
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string::npos)
            end = bytes.size();
        const std::string line = bytes.substr(start, end - start);
        const size_t equals = line.find('=');
        if (equals != std::string::npos && equals > 0)
            file.fValues.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        start = end + 1;
    }
    return file;
}

bool SideFile::Remove(const std::string &name)
{
    const std::string path = GetSettingFullPath(kSettingsFolder, name);
    if (path.empty())
        return true;
    platform::Entry entry(path);
    return !entry.Exists() || entry.Remove() == B_OK;
}

std::string SideFile::Get(const std::string &key) const
{
    for (const auto &[name, value] : fValues) {
        if (name == key)
            return value;
    }
    return {};
}

std::vector<std::string> SideFile::GetAll(const std::string &key) const
{
    std::vector<std::string> values;
    for (const auto &[name, value] : fValues) {
        if (name == key)
            values.push_back(value);
    }
    return values;
}

void SideFile::Set(const std::string &key, const std::string &value)
{
    SetAll(key, value.empty() ? std::vector<std::string>{} : std::vector<std::string>{value});
}

void SideFile::SetAll(const std::string &key, const std::vector<std::string> &values)
{
    const auto first = std::find_if(fValues.begin(), fValues.end(),
                                    [&key](const auto &each) { return each.first == key; });
    const size_t at = size_t(first - fValues.begin());
    std::erase_if(fValues, [&key](const auto &each) { return each.first == key; });
    std::vector<std::pair<std::string, std::string>> lines;
    for (const std::string &value : values) {
        // A line end would split the value into a line of its own.
        if (value.find_first_of("\r\n") == std::string::npos)
            lines.emplace_back(key, value);
    }
    fValues.insert(fValues.begin() + std::min(at, fValues.size()), lines.begin(), lines.end());
}

std::vector<std::string> SideFile::Keys() const
{
    std::vector<std::string> keys;
    for (const auto &each : fValues) {
        if (std::find(keys.begin(), keys.end(), each.first) == keys.end())
            keys.push_back(each.first);
    }
    return keys;
}

bool SideFile::Write() const
{
    if (fValues.empty())
        return Remove(fName);
    const std::string path = GetSettingFullPath(kSettingsFolder, fName);
    if (path.empty() || !CreatePrefFolder(kSettingsFolder))
        return false;
    std::string bytes;
    for (const auto &[key, value] : fValues)
        bytes += key + "=" + value + "\n";
    return ReplaceWhole(path, bytes);
}

} // namespace kestrin
