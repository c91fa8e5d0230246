#include "fileops/Trash.h"

#include "fileops/KestrinEntry.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/Paths.h"

#include <climits>
#include <vector>

namespace kestrin {

namespace {

constexpr char kInfoSuffix[] = ".trashinfo";
constexpr size_t kInfoSuffixLength = sizeof(kInfoSuffix) - 1;
// The longest name in files/ whose info file still fits NAME_MAX.
constexpr size_t kMaxTrashName = NAME_MAX - kInfoSuffixLength;

// `path` with its links resolved, or as given when it cannot be resolved.
std::string Resolved(const std::string &path)
{
    platform::Entry entry(path, true);
    std::string resolved;
    return entry.GetPath(&resolved) == B_OK ? resolved : path;
}

status_t MakeFolder(const std::string &parent, const std::string &name)
{
    const status_t status = platform::Directory(parent).CreateDirectory(name);
    if (status != B_OK && status != B_FILE_EXISTS)
        return status;
    return platform::Directory(parent + "/" + name).InitCheck();
}

// Cuts `text` to at most `length` bytes without splitting a UTF-8 sequence.
std::string CutUtf8(const std::string &text, size_t length)
{
    if (text.size() <= length)
        return text;
    size_t cut = length;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        cut--;
    // Not UTF-8 after all: bytes are all a name is made of.
    return text.substr(0, cut > 0 ? cut : length);
}

} // namespace

Trash::Trash()
{
    std::string path;
    if (fStatus = platform::FindDirectory(platform::DirectoryWhich::Trash, &path, true);
        fStatus != B_OK)
        return;
    fPath = Resolved(path);
    if (fStatus = MakeFolder(fPath, "files"); fStatus != B_OK)
        return;
    fStatus = MakeFolder(fPath, "info");
}

bool Trash::IsTrashFolder(const std::string &folder) const
{
    if (fStatus != B_OK || folder.empty())
        return false;
    const std::string resolved = Resolved(folder);
    return resolved == fPath || resolved == FilesPath();
}

std::string Trash::CandidateName(const std::string &leaf, int attempt)
{
    std::string suffix;
    if (attempt == 1)
        suffix = " copy";
    else if (attempt > 1)
        suffix = " copy" + std::to_string(attempt);
    return CutUtf8(leaf, kMaxTrashName - suffix.size()) + suffix;
}

std::string Trash::InfoFile(const std::string &name) const
{
    return InfoPath() + "/" + name + kInfoSuffix;
}

status_t Trash::WriteInfo(const std::string &name, const std::string &originalPath)
{
    if (fStatus != B_OK)
        return fStatus;
    const std::string path = InfoFile(name);
    platform::File file(path, B_WRITE_ONLY | B_CREATE_FILE | B_FAIL_IF_EXISTS, 0600);
    if (file.InitCheck() != B_OK)
        return file.InitCheck();
    const std::string text = InfoText(originalPath, time(nullptr));
    const ssize_t written = file.Write(text.data(), text.size());
    if (written == ssize_t(text.size()))
        return B_OK;
    // Half an info file would make the item unrestorable; better none.
    file.Unset();
    platform::Entry(path).Remove();
    return written < 0 ? status_t(written) : B_DEVICE_FULL;
}

void Trash::RemoveInfo(const std::string &name)
{
    if (fStatus == B_OK)
        platform::Entry(InfoFile(name)).Remove();
}

status_t Trash::ReserveName(const std::string &leaf,
                            const std::string &originalPath,
                            std::string *name)
{
    if (fStatus != B_OK)
        return fStatus;
    if (leaf.empty() || !name)
        return B_BAD_VALUE;
    for (int attempt = 0;; attempt++) {
        const std::string candidate = CandidateName(leaf, attempt);
        if (platform::Entry(FilesPath() + "/" + candidate).Exists())
            continue;
        const status_t status = WriteInfo(candidate, originalPath);
        if (status == B_FILE_EXISTS)
            continue;
        if (status == B_OK)
            *name = candidate;
        return status;
    }
}

std::string Trash::InfoText(const std::string &originalPath, time_t deletionTime)
{
    tzset();
    struct tm local = {};
    localtime_r(&deletionTime, &local);
    char date[32] = {};
    strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + EscapePath(originalPath) + "\nDeletionDate=" + date + "\n";
}

std::string Trash::EscapePath(const std::string &path)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string escaped;
    escaped.reserve(path.size());
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool unreserved = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z')
                                || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.'
                                || byte == '_' || byte == '~' || byte == '/';
        if (unreserved) {
            escaped += c;
        } else {
            escaped += '%';
            escaped += kHex[byte >> 4];
            escaped += kHex[byte & 0x0F];
        }
    }
    return escaped;
}

void Trash::Empty()
{
    platform::Directory files(FilesPath());
    platform::Entry entry;
    std::vector<std::string> names;
    while (files.GetNextEntry(&entry) == B_OK) {
        std::string name;
        if (entry.GetName(&name) == B_OK)
            names.push_back(name);
    }
    for (const std::string &name : names) {
        KestrinEntry(FilesPath() + "/" + name).DeleteEntry();
        RemoveInfo(name);
    }
}

} // namespace kestrin
