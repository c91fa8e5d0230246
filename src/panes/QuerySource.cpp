#include "panes/QuerySource.h"

#include "panes/DirListItem.h"
#include "panes/FolderSource.h"
#include "panes/PaneMessages.h"
#include "platform/Entry.h"

namespace kestrin {

namespace {

std::vector<entry_ref> RefsOf(const platform::Message &results)
{
    std::vector<entry_ref> refs;
    // The query window sends one "ref" per entry; "refs" is what panes
    // and drops have always carried, and is read too.
    entry_ref ref;
    for (const char *field : {"refs", "ref"})
        for (int32_t i = 0; results.FindRef(field, i, &ref) == B_OK; i++)
            refs.push_back(ref);
    return refs;
}

std::string QueryTextOf(const platform::Message &results)
{
    std::string text;
    results.FindString("QueryString", &text);
    return text;
}

} // namespace

QuerySource::QuerySource(std::vector<entry_ref> refs, std::string queryText, std::string folder)
    : fRefs(std::move(refs))
    , fQueryText(std::move(queryText))
    , fFolder(std::move(folder))
{}

QuerySource::QuerySource(const platform::Message &results, std::string folder)
    : QuerySource(RefsOf(results), QueryTextOf(results), std::move(folder))
{}

int32_t QuerySource::Mode() const
{
    return kModeQuery;
}

FolderLister::Reader QuerySource::Reader(const RowStyle &style) const
{
    return [refs = fRefs, style](FolderLister::Job &job) {
        job.total = int32_t(refs.size());
        FolderLister::Groups groups;
        for (const entry_ref &ref : refs) {
            if (job.cancel) {
                job.readStatus = B_CANCELED;
                return;
            }
            groups.Add(job,
                       std::make_unique<DirListItem>(platform::Entry(ref.path),
                                                     style.colors,
                                                     false,
                                                     RowName::Path,
                                                     style.dateFormat));
            job.done++;
        }
        groups.MoveInto(job);
    };
}

std::string QuerySource::PathOf(const DirListItem &row) const
{
    return row.Name();
}

std::unique_ptr<PaneSource> QuerySource::Parent(std::string *) const
{
    return std::make_unique<FolderSource>(fFolder);
}

Opening QuerySource::Open(const DirListItem &row) const
{
    return FolderSource::OpenEntry(PathOf(row), fFolder);
}

TransferPlace QuerySource::Place() const
{
    return {TransferPlace::Kind::QueryResults, fFolder, {}};
}

} // namespace kestrin
