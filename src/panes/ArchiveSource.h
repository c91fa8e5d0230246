#pragma once

#include "panes/PaneSource.h"

namespace kestrin {

// The contents of an archive (mode 1103): the members directly inside one of
// its folders, read on a worker. Up a level climbs the archive's folders and
// leaves it at its top for the folder it was opened from; F5 unpacks rows
// into the other pane. Its rows are no local entries: nothing is dragged
// out, viewed or edited, and nothing is copied in.
class ArchiveSource : public PaneSource
{
public:
    // The place up a level leads to from the archive's top (and where the
    // pane goes when the archive cannot be read): the place it was opened
    // from, made afresh each time.
    using Outside = std::function<std::unique_ptr<PaneSource>()>;

    // `folder` is the local folder the pane stands in; `subPath` is "" at
    // the archive's top, else a folder path ending in "/".
    ArchiveSource(std::string archive, std::string folder, Outside outside, std::string subPath = {});

    int32_t Mode() const override;
    const std::string &Folder() const override { return fFolder; }
    std::string HeaderText() const override;
    std::string PathText() const override { return HeaderText(); }
    // The archive and the folder inside it (PlaceText::ArchivePlace).
    std::string RecalledPlace() const override;

    FolderLister::Reader Reader(const RowStyle &style) const override;
    void Listed(const FolderLister::Job &job) override;
    std::unique_ptr<PaneSource> Fallback(std::string *selectAfter) const override;

    std::string PathOf(const DirListItem &row) const override;

    std::unique_ptr<PaneSource> Parent(std::string *selectAfter) const override;
    Opening Open(const DirListItem &row) const override;

    bool HoldsLocalEntries() const override { return false; }
    TransferPlace Place() const override;
    CopyOut CopyRequest() const override;
    // "Archive", "CopyFrom", a "ZipDir" for each folder row and a "ZipFile"
    // for each other row, and "From".
    platform::Message Request(uint32_t what,
                              const std::vector<const DirListItem *> &rows) const override;

    const std::string &Archive() const { return fArchive; }
    const std::string &SubPath() const { return fSubPath; }

private:
    std::string fArchive;
    std::string fFolder;
    Outside fOutside;
    std::string fSubPath;
};

} // namespace kestrin
