#include "ftp/SessionOptions.h"

#include "app/AppInfo.h"
#include "app/Profile.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/PathNames.h"

namespace kestrin {

namespace {

// Generous for a few short lines; a file any bigger is no file of ours.
constexpr size_t kMostBytes = 64 * 1024;

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

std::string SessionOptions::FileNameOf(const std::string &sessionFile)
{
    return sessionFile + ".kestrin";
}

SessionOptions SessionOptions::Read(const std::string &sessionFile)
{
    SessionOptions options;
    options.fSessionFile = sessionFile;
    const std::string path = GetSettingFullPath(kSettingsFolder, FileNameOf(sessionFile));
    if (path.empty())
        return options;
    const std::string bytes = ReadWhole(path);
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string::npos)
            end = bytes.size();
        const std::string line = bytes.substr(start, end - start);
        const size_t equals = line.find('=');
        if (equals != std::string::npos && equals > 0)
            options.fValues.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        start = end + 1;
    }
    return options;
}

bool SessionOptions::Remove(const std::string &sessionFile)
{
    const std::string path = GetSettingFullPath(kSettingsFolder, FileNameOf(sessionFile));
    if (path.empty())
        return true;
    platform::Entry entry(path);
    return !entry.Exists() || entry.Remove() == B_OK;
}

std::string SessionOptions::Get(const std::string &key) const
{
    for (const auto &[name, value] : fValues) {
        if (name == key)
            return value;
    }
    return {};
}

void SessionOptions::Set(const std::string &key, const std::string &value)
{
    std::erase_if(fValues, [&key](const auto &each) { return each.first == key; });
    if (!value.empty())
        fValues.emplace_back(key, value);
}

bool SessionOptions::Write() const
{
    if (fValues.empty())
        return Remove(fSessionFile);
    const std::string path = GetSettingFullPath(kSettingsFolder, FileNameOf(fSessionFile));
    if (path.empty())
        return false;
    std::string bytes;
    for (const auto &[key, value] : fValues)
        bytes += key + "=" + value + "\n";
    return ReplaceWhole(path, bytes);
}

} // namespace kestrin
