#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace platform {

// What a folder's own record says an entry is, without a stat. File systems
// that keep no type in their records answer Unknown, and then only a stat
// tells.
enum class EntryKind : uint8_t { Unknown, Folder, File, Link, Other };

// One folder opened for a walk over a tree: it is never reached through a
// link, its entries come with their kinds from the folder's own records, and
// an entry is stat'ed only when asked, relative to the open folder. What a
// walk needs to read a million names without a million stats.
class WalkFolder
{
public:
    // Answers false to stop reading. `name` lasts for the call.
    using Visit = std::function<bool(std::string_view name, EntryKind kind)>;

    // Fails (B_LINK_LIMIT, B_PERMISSION_DENIED ...) when `path` is a link or
    // cannot be opened as a folder.
    explicit WalkFolder(const std::string &path);
    ~WalkFolder();

    WalkFolder(const WalkFolder &) = delete;
    WalkFolder &operator=(const WalkFolder &) = delete;

    status_t InitCheck() const { return fStatus; }
    dev_t Device() const { return fInfo.st_dev; }
    ino_t Node() const { return fInfo.st_ino; }

    // Every entry but "." and ".."; `buffer` is the caller's, so that one
    // thread reuses one for every folder. B_OK or why reading stopped.
    status_t ReadEntries(std::vector<char> &buffer, const Visit &visit) const;
    // The entry's own stat data, links not followed.
    status_t StatEntry(const char *name, struct stat *info) const;

    static EntryKind KindOf(mode_t mode);

private:
    int fFD = -1;
    status_t fStatus = B_NO_INIT;
    struct stat fInfo = {};
};

} // namespace platform
