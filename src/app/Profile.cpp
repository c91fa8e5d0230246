#include "app/Profile.h"

#include "app/NumberText.h"

#include "platform/Alerts.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/Paths.h"

#include <cstring>

namespace kestrin {

namespace {

// Keys and values have always been C strings: whatever follows a NUL byte is
// not part of them.
std::string_view CString(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

void ShowHey(const char *text)
{
    platform::Alerts::Go({"Hey", text, {"Oh well"}, B_INFO_ALERT, B_WIDTH_AS_USUAL});
}

// Profiles hold FTP passwords too: only their owner reads them.
constexpr mode_t kProfilePermissions = 0600;

// Bytes read per system call while looking for a line feed.
constexpr size_t kReadChunk = 256;

} // namespace

bool GetPathOnly(std::string *out)
{
    std::string path;
    if (platform::FindDirectory(platform::DirectoryWhich::UserSettings, &path) != B_OK) {
        ShowHey("Couldn't find the preferences directory.");
        return false;
    }
    *out = path;
    return true;
}

std::string GetSettingFullPath(std::string_view folder, std::string_view file)
{
    std::string settings;
    if (!GetPathOnly(&settings))
        return std::string();
    return settings + "/" + std::string(folder) + "/" + std::string(file);
}

bool CreatePrefFolder(std::string_view folder)
{
    std::string settings;
    if (!GetPathOnly(&settings))
        return false;
    const std::string folderPath = settings + "/" + std::string(folder);
    if (platform::FindDirectory(platform::DirectoryWhich::UserSettings, &settings, true) != B_OK)
        return false;
    platform::Directory parent(settings);
    const status_t made = parent.CreateDirectory(folderPath);
    return made == B_OK || made == B_FILE_EXISTS;
}

bool CreatePrefFile(std::string_view folder, std::string_view file)
{
    if (!CreatePrefFolder(folder))
        return false;
    std::string settings;
    GetPathOnly(&settings);
    const std::string folderPath = settings + "/" + std::string(folder);
    platform::File created(folderPath + "/" + std::string(file),
                           B_WRITE_ONLY | B_CREATE_FILE | B_FAIL_IF_EXISTS,
                           kProfilePermissions);
    const status_t status = created.InitCheck();
    if (status == B_OK)
        return true;
    // Something already there is kept, but only a file can serve as the profile.
    return status == B_FILE_EXISTS
           && platform::File(folderPath + "/" + std::string(file), B_READ_ONLY).InitCheck() == B_OK;
}

ssize_t ReadLine(platform::File &file, std::string *out)
{
    out->clear();
    char chunk[kReadChunk];
    for (;;) {
        const ssize_t got = file.Read(chunk, sizeof(chunk));
        if (got <= 0)
            break;
        const void *feed = memchr(chunk, '\n', size_t(got));
        if (!feed) {
            out->append(chunk, size_t(got));
            continue;
        }
        const size_t used = size_t(static_cast<const char *>(feed) - chunk) + 1;
        out->append(chunk, used);
        // Leave the file just past the line feed, where a byte-wise reader would.
        file.Seek(off_t(used) - off_t(got), SEEK_CUR);
        break;
    }
    const ssize_t count = ssize_t(out->size());
    if (count > 0)
        out->pop_back();
    return count;
}

bool Compare(std::string_view key, std::string_view line)
{
    key = CString(key);
    line = CString(line);
    if (line.size() >= key.size())
        return line.substr(0, key.size()) == key && line.size() > key.size()
               && line[key.size()] == '=';
    return key.substr(0, line.size()) == line && key[line.size()] == '=';
}

bool FindValue(platform::File &file, std::string_view key, std::string *value)
{
    key = CString(key);
    off_t lineStart = 0;
    file.Seek(0, SEEK_SET);
    std::string line;
    for (;;) {
        const ssize_t count = ReadLine(file, &line);
        if (count <= 0)
            return false;
        if (Compare(key, line)) {
            file.Seek(lineStart, SEEK_SET);
            const std::string_view text = CString(line);
            *value = std::string(text.substr(std::min(key.size() + 1, text.size())));
            return true;
        }
        lineStart += count;
    }
}

bool GetProfileString(std::string_view folder,
                      std::string_view key,
                      std::string *value,
                      std::string_view file)
{
    const std::string path = GetSettingFullPath(folder, file);
    if (path.empty())
        return false;
    platform::File profile(path, B_READ_ONLY);
    if (profile.InitCheck() != B_OK)
        return false;
    return FindValue(profile, key, value);
}

bool GetProfileFlag(std::string_view folder,
                    std::string_view key,
                    bool fallback,
                    std::string_view file)
{
    std::string value;
    if (!GetProfileString(folder, key, &value, file))
        return fallback;
    return kestrin::atoi(value.c_str()) != 0;
}

bool SetProfileString(std::string_view folder,
                      std::string_view key,
                      std::string_view value,
                      std::string_view file)
{
    const std::string path = GetSettingFullPath(folder, file);
    if (path.empty() || !platform::Entry(path).Exists()) {
        if (!CreatePrefFile(folder, file)) {
            ShowHey("Could not create the application preferences file.");
            return false;
        }
    }
    platform::File profile(path, B_READ_WRITE);
    if (profile.InitCheck() != B_OK)
        return true;
    const std::string line = std::string(CString(key)) + "=" + std::string(CString(value)) + "\n";
    std::string old;
    if (!FindValue(profile, key, &old))
        profile.Seek(0, SEEK_END);
    profile.Write(line.data(), line.size());
    return true;
}

} // namespace kestrin
