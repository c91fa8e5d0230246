#include "platform/WalkFolder.h"

#include "platform/DirEntries.h"

#include <fcntl.h>

namespace platform {

namespace {

EntryKind KindOfType(unsigned char type)
{
    switch (type) {
    case DT_DIR:
        return EntryKind::Folder;
    case DT_REG:
        return EntryKind::File;
    case DT_LNK:
        return EntryKind::Link;
    case DT_UNKNOWN:
        return EntryKind::Unknown;
    default:
        return EntryKind::Other;
    }
}

} // namespace

WalkFolder::WalkFolder(const std::string &path)
{
    do {
        fFD = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    } while (fFD < 0 && errno == EINTR);
    if (fFD < 0) {
        // A link answers ELOOP here, which is B_LINK_LIMIT.
        fStatus = LastError();
        return;
    }
    fStatus = fstat(fFD, &fInfo) == 0 ? B_OK : LastError();
}

WalkFolder::~WalkFolder()
{
    if (fFD >= 0)
        close(fFD);
}

status_t WalkFolder::ReadEntries(std::vector<char> &buffer, const Visit &visit) const
{
    if (fStatus != B_OK)
        return fStatus;
    if (buffer.size() < 64 * 1024)
        buffer.resize(64 * 1024);
    return ForEachDirEntry(fFD, buffer, [&visit](const char *name, unsigned char type) {
        return visit(name, KindOfType(type));
    });
}

status_t WalkFolder::StatEntry(const char *name, struct stat *info) const
{
    if (fStatus != B_OK)
        return fStatus;
    return fstatat(fFD, name, info, AT_SYMLINK_NOFOLLOW) == 0 ? B_OK : LastError();
}

EntryKind WalkFolder::KindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return EntryKind::Folder;
    if (S_ISREG(mode))
        return EntryKind::File;
    if (S_ISLNK(mode))
        return EntryKind::Link;
    return EntryKind::Other;
}

} // namespace platform
