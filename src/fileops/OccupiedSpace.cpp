#include "fileops/OccupiedSpace.h"

#include "platform/Directory.h"
#include "platform/Entry.h"

#include <cstdio>
#include <string>
#include <sys/stat.h>

namespace kestrin {

void fsize(const char *path)
{
    struct stat info;
    if (platform::Entry(path, true).GetStat(&info) != B_OK) {
        fprintf(stderr, "fsize: can't access %s\n", path);
        return;
    }
    // Only a real folder is walked into: a link to a folder shows its target's
    // size but is not followed, so a link loop cannot recurse for ever.
    if (S_ISDIR(info.st_mode) && platform::Entry(path).IsDirectory())
        dirwalk(path, fsize);
    printf("% 8ld %s\n", static_cast<long>(info.st_size), path);
}

void dirwalk(const char *dir, void (*apply)(const char *))
{
    platform::Directory folder(dir);
    const status_t status = folder.InitCheck();
    if (status == B_ENTRY_NOT_FOUND) {
        fprintf(stderr, "dirwalk: can't open %s\n", dir);
        return;
    }
    if (status != B_OK)
        return;
    platform::Entry entry;
    std::string path;
    while (folder.GetNextEntry(&entry, false) == B_OK) {
        if (entry.GetPath(&path) == B_OK)
            apply(path.c_str());
    }
}

} // namespace kestrin
