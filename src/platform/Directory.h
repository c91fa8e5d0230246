#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <dirent.h>
#include <string>

namespace platform {

class Entry;
class File;

// An open folder (BDirectory): iterates its entries and creates new ones in
// it. Paths given to the Create* calls and to FindEntry are taken relative to
// the folder unless they are absolute.
class Directory
{
public:
    Directory() = default;
    explicit Directory(const std::string &path);
    ~Directory();

    Directory(Directory &&other) noexcept;
    Directory &operator=(Directory &&other) noexcept;
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;

    // Links are followed to the folder itself.
    status_t SetTo(const std::string &path);
    status_t SetTo(const Entry &entry);
    status_t InitCheck() const { return fStatus; }
    void Unset();

    // The next entry, in the order the file system keeps them; "." and ".."
    // are skipped. B_ENTRY_NOT_FOUND after the last one.
    status_t GetNextEntry(Entry *entry, bool traverse = false);
    status_t Rewind();
    // Counts without disturbing the iteration; negative on error.
    int32_t CountEntries() const;

    // B_ENTRY_NOT_FOUND unless the entry exists (after traversal, if asked).
    status_t FindEntry(const std::string &path, Entry *entry, bool traverse = false) const;
    bool Contains(const std::string &path) const;

    // B_FILE_EXISTS when anything, even a dangling link, is in the way.
    status_t CreateDirectory(const std::string &path, Directory *created = nullptr) const;
    // Without `failIfExists` an existing file is emptied. `file` may be null.
    status_t CreateFile(const std::string &path, File *file, bool failIfExists = false) const;
    status_t CreateSymLink(const std::string &path, const std::string &linkTarget) const;

    // Makes a new folder only its owner may enter, named after `pattern`
    // whose last six characters are "XXXXXX", and leaves its path in `path`.
    static status_t CreatePrivate(const std::string &pattern, std::string *path);

    // The folder itself.
    status_t GetEntry(Entry *entry) const;

private:
    std::string Resolve(const std::string &path) const;

    DIR *fDir = nullptr;
    std::string fPath;
    status_t fStatus = B_NO_INIT;
};

} // namespace platform
