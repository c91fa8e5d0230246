#include "panes/FolderLister.h"

#include "panes/DirListItem.h"
#include "panes/PaneMessages.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "widgets/StableMergeSort.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

namespace kestrin {

namespace {

// The rows of a listing as they are made: folders and files apart, so that
// the folders come first, each group in the order it was read.
struct RowGroups
{
    std::vector<std::unique_ptr<CLVListItem>> folders;
    std::vector<std::unique_ptr<CLVListItem>> files;

    void Add(FolderLister::Job &job, std::unique_ptr<DirListItem> row)
    {
        job.byName.emplace(row->Name(), row.get());
        (row->IsFolder() ? folders : files).push_back(std::move(row));
    }
    void MoveInto(FolderLister::Job &job)
    {
        job.rows = std::move(folders);
        job.rows.reserve(job.rows.size() + files.size());
        for (auto &row : files)
            job.rows.push_back(std::move(row));
    }
};

void ListFolder(const FolderLister::Request &request, FolderLister::Job &job)
{
    platform::FolderScan scan(request.path);
    job.openStatus = scan.InitCheck();
    if (job.openStatus != B_OK) {
        job.readStatus = job.openStatus;
        return;
    }
    job.folderInfo = scan.FolderInfo();
    const int32_t count = scan.ReadNames();
    job.total = count < 0 ? int32_t(scan.Names().size()) : count;
    std::vector<platform::ScannedEntry> entries;
    status_t status = scan.StatEntries(&entries, &job.cancel, &job.done);
    if (count < 0)
        status = count;
    job.readStatus = status;
    if (status == B_CANCELED)
        return;

    RowGroups groups;
    groups.files.reserve(entries.size());
    if (request.path != "/")
        groups.folders.push_back(std::make_unique<DirListItem>(platform::ScannedEntry(),
                                                               request.colors,
                                                               true,
                                                               kModeFolder,
                                                               request.dateFormat));
    for (const platform::ScannedEntry &entry : entries)
        groups.Add(job,
                   std::make_unique<DirListItem>(entry,
                                                 request.colors,
                                                 false,
                                                 kModeFolder,
                                                 request.dateFormat));
    groups.MoveInto(job);
}

void ListQuery(const FolderLister::Request &request, FolderLister::Job &job)
{
    job.total = int32_t(request.refs.size());
    RowGroups groups;
    for (const entry_ref &ref : request.refs) {
        if (job.cancel) {
            job.readStatus = B_CANCELED;
            return;
        }
        const platform::Entry entry(ref.path);
        groups.Add(job,
                   std::make_unique<DirListItem>(entry,
                                                 request.colors,
                                                 false,
                                                 kModeQuery,
                                                 request.dateFormat));
        job.done++;
    }
    groups.MoveInto(job);
}

} // namespace

void FolderLister::SortRows(std::vector<std::unique_ptr<CLVListItem>> &rows,
                            int32_t sortKey,
                            CLVSortMode sortMode)
{
    if (sortMode == NoSort)
        return;
    const bool descending = sortMode == Descending;
    StableMergeSort(rows,
                    [sortKey, descending](const std::unique_ptr<CLVListItem> &left,
                                          const std::unique_ptr<CLVListItem> &right) {
                        const int order = CompareFunc(left.get(), right.get(), sortKey);
                        return descending ? order >= 0 : order <= 0;
                    });
}

void FolderLister::Run(const Request &request, Job &job)
{
    if (request.mode == kModeQuery)
        ListQuery(request, job);
    else
        ListFolder(request, job);
    if (!job.cancel)
        SortRows(job.rows, request.sortKey, request.sortMode);
    job.finished = true;
}

std::shared_ptr<FolderLister::Job> FolderLister::Start(Request request, QObject *context, Done done)
{
    auto job = std::make_shared<Job>();
    QPointer<QObject> guard(context);
    QThreadPool::globalInstance()->start(
        [job, request = std::move(request), guard, done = std::move(done)]() {
            Run(request, *job);
            if (job->cancel)
                return;
            // Delivered through the application, which outlives every pane:
            // the guard is read only on the GUI thread, where the context
            // is destroyed.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [job, guard, done]() {
                    if (guard)
                        done(job);
                },
                Qt::QueuedConnection);
        });
    return job;
}

} // namespace kestrin
