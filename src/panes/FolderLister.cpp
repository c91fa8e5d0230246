#include "panes/FolderLister.h"

#include "panes/DirListItem.h"

#include "platform/Background.h"
#include "platform/Heap.h"

namespace kestrin {

void FileTotals::Add(const CLVListItem &row)
{
    const auto &entry = static_cast<const DirListItem &>(row);
    if (!entry.IsFolder()) {
        bytes += uint32_t(entry.Size());
        count++;
    }
}

void FileTotals::Remove(const CLVListItem &row)
{
    const auto &entry = static_cast<const DirListItem &>(row);
    if (!entry.IsFolder()) {
        bytes -= uint32_t(entry.Size());
        count--;
    }
}

void FolderLister::Groups::Add(Job &job, std::unique_ptr<DirListItem> row)
{
    if (!row->IsParent())
        job.byName.Insert(row.get());
    (row->IsFolder() ? fFolders : fFiles).push_back(std::move(row));
}

void FolderLister::Groups::MoveInto(Job &job)
{
    job.rows = std::move(fFolders);
    job.rows.reserve(job.rows.size() + fFiles.size());
    for (auto &row : fFiles)
        job.rows.push_back(std::move(row));
    fFiles.clear();
}

void FolderLister::SortRows(std::vector<std::unique_ptr<CLVListItem>> &rows,
                            int32_t sortKey,
                            CLVSortMode sortMode)
{
    if (sortMode == NoSort)
        return;
    SortDirRows(rows, sortKey, sortMode == Descending);
}

void FolderLister::Run(const Reader &reader, const RowStyle &style, Job &job)
{
    reader(job);
    if (!job.cancel) {
        SortRows(job.rows, style.sortKey, style.sortMode);
        for (const std::unique_ptr<CLVListItem> &row : job.rows)
            job.files.Add(*row);
    }
    // The stat data and the sort's keys of a big folder were a few blocks
    // of tens of megabytes, freed by now.
    if (job.rows.size() >= kRowsWorthATrim)
        platform::Heap::GiveBackFreePages();
    job.finished = true;
}

std::shared_ptr<FolderLister::Job> FolderLister::Start(Reader reader,
                                                       const RowStyle &style,
                                                       QObject *context,
                                                       Done done)
{
    auto job = std::make_shared<Job>();
    // The job's own flag is the stop flag: readers look at it as they go.
    platform::Background::Run(
        context,
        [job, reader = std::move(reader), style](const std::atomic<bool> &) {
            Run(reader, style, *job);
        },
        [job, done = std::move(done)] {
            if (!job->cancel)
                done(job);
        });
    return job;
}

} // namespace kestrin
