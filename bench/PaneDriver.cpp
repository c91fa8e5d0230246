// kestrin-pane-driver [--archive | --ftp] PATH
// Lists the folder PATH into a pane's list the way Kestrin does (read and stat
// on a worker, rows made and sorted, shown in the list, progress reported to
// the pane's footer), on Qt's offscreen platform; with --archive, the top of
// the archive PATH as Enter on it shows it; with --ftp, the remote folder of
// the stored session PATH ("<name>.ftp"), connecting as 602 does. Prints, one
// per line:
//   list_ms     from the request to the rows being shown
//   rss_mb      growth of resident memory over that listing
//   sort_ms     sorting the rows again by size
//   rows        how many rows were shown

#include "BenchSupport.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/PaneMessages.h"
#include "platform/AlertRecorder.h"

#include <QApplication>
#include <QEventLoop>
#include <chrono>
#include <cstdio>
#include <string>
#include <unistd.h>

int main(int argc, char **argv)
{
    const bool archive = argc == 3 && std::string(argv[1]) == "--archive";
    const bool ftp = argc == 3 && std::string(argv[1]) == "--ftp";
    if (argc != 2 && !archive && !ftp) {
        fprintf(stderr, "usage: kestrin-pane-driver [--archive | --ftp] PATH\n");
        return 2;
    }
    const std::string path = argv[argc - 1];
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    platform::AlertRecorder alerts;

    // The pane is made on an empty folder so that its first listing costs
    // nothing; the measured listing is the one asked for below.
    const std::string empty = "/var/empty";
    kestrin::DirPane pane(access(empty.c_str(), R_OK) == 0 ? empty : "/", "");
    pane.resize(800, 600);
    kestrin::DirView *list = pane.List();
    QEventLoop loop;
    QObject::connect(list, &kestrin::DirView::ListingFinished, &loop, &QEventLoop::quit);
    pane.show();
    loop.exec();

    const double before = ResidentMegabytes();
    const auto start = std::chrono::steady_clock::now();
    if (archive)
        pane.DoZip(path);
    else if (ftp)
        pane.DoFtp(path);
    else
        list->Populate(path);
    loop.exec();
    // The rows are shown when the list has painted once.
    QCoreApplication::processEvents();
    const double listed = Milliseconds(start);
    const double growth = ResidentMegabytes() - before;

    const auto sortStart = std::chrono::steady_clock::now();
    list->SetSortMode(kestrin::kColumnSize, kestrin::Ascending);
    QCoreApplication::processEvents();
    const double sorted = Milliseconds(sortStart);

    printf("list_ms %.1f\nrss_mb %.1f\nsort_ms %.1f\nrows %d\n",
           listed,
           growth,
           sorted,
           list->CountItems());
    return alerts.Count() == 0 ? 0 : 1;
}
