#pragma once

#include "panes/PaneSource.h"

#include <sys/stat.h>

namespace kestrin {

// A local folder (mode 1101): read with its stat data on a worker, watched by
// node monitoring, its entries renamed and made in place.
class FolderSource : public PaneSource
{
public:
    explicit FolderSource(std::string folder);

    int32_t Mode() const override;
    const std::string &Folder() const override { return fFolder; }

    FolderLister::Reader Reader(const RowStyle &style) const override;
    void Listed(const FolderLister::Job &job) override;
    std::string WatchedFolder() const override { return fFolder; }
    dev_t Device() const override { return fInfo.st_dev; }

    std::string PathOf(const DirListItem &row) const override;
    entry_ref RefOf(const DirListItem &row) const override;

    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;
    Opening Open(const DirListItem &row) const override;
    bool IsLocalFolder() const override { return true; }

    // What opening a local entry does, wherever it is listed: a folder is
    // shown, an archive's contents are shown (and left for `standing`), any
    // other file is launched with its preferred application; a link that
    // leads nowhere opens nothing.
    static Opening OpenEntry(const std::string &path, const std::string &standing);
    // The contents of an archive, opened from the local folder `standing`.
    static std::unique_ptr<PaneSource> Archive(const std::string &archive,
                                               const std::string &standing);

private:
    std::string fFolder;
    // The folder as its last listing found it.
    struct stat fInfo = {};
};

} // namespace kestrin
