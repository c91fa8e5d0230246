// kestrin-pane-driver FOLDER
// Lists FOLDER into a pane's list the way Kestrin does (read and stat on a
// worker, rows made and sorted, shown in the list, progress reported to the
// pane's footer), on Qt's offscreen platform. Prints, one per line:
//   list_ms     from the request to the rows being shown
//   rss_mb      growth of resident memory over that listing
//   sort_ms     sorting the rows again by size
//   rows        how many rows were shown

#include "DriverMeasures.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/PaneMessages.h"
#include "platform/AlertRecorder.h"

#include <QApplication>
#include <QEventLoop>
#include <chrono>
#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: kestrin-pane-driver FOLDER\n");
        return 2;
    }
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
    list->Populate(argv[1]);
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
