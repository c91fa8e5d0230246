#include "panes/PaneSource.h"

#include "panes/PaneMessages.h"
#include "platform/PathNames.h"

namespace kestrin {

entry_ref PaneSource::RefOf(const DirListItem &row) const
{
    entry_ref ref;
    ref.path = PathOf(row);
    // The path stays as the row has it (a folder reached through a link is
    // not resolved); the folder's node is what stat finds there.
    struct stat folder;
    if (platform::StatPath(platform::ParentPath(ref.path, &ref.name), &folder) == B_OK) {
        ref.device = folder.st_dev;
        ref.directory = folder.st_ino;
    }
    return ref;
}

std::shared_ptr<FolderLister::Job> PaneSource::StartReading(const RowStyle &style,
                                                            QObject *context,
                                                            FolderLister::Done done) const
{
    return FolderLister::Start(Reader(style), style, context, std::move(done));
}

CopyOut PaneSource::CopyRequest() const
{
    return {kMsgCopyRequest, "Copy"};
}

std::optional<platform::Message> PaneSource::ViewRequest(const DirListItem &row) const
{
    if (!HoldsLocalEntries())
        return std::nullopt;
    platform::Message request(kMsgOpenViewer);
    request.AddString("path", PathOf(row));
    return request;
}

platform::Message PaneSource::Request(uint32_t what,
                                      const std::vector<const DirListItem *> &rows) const
{
    platform::Message request(what);
    for (const DirListItem *row : rows)
        request.AddRef("refs", RefOf(*row));
    request.AddString("From", Folder());
    return request;
}

} // namespace kestrin
