#include "panes/FolderLister.h"

#include "panes/DirListItem.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

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
    job.finished = true;
}

std::shared_ptr<FolderLister::Job> FolderLister::Start(Reader reader,
                                                       const RowStyle &style,
                                                       QObject *context,
                                                       Done done)
{
    auto job = std::make_shared<Job>();
    QPointer<QObject> guard(context);
    QThreadPool::globalInstance()->start(
        [job, reader = std::move(reader), style, guard, done = std::move(done)]() {
            Run(reader, style, *job);
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
