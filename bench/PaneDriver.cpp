// kestrin-pane-driver [--archive | --ftp] PATH
// kestrin-pane-driver --burst COUNT PATH
// Lists the folder PATH into a pane's list the way Kestrin does (read and stat
// on a worker, rows made and sorted, shown in the list, progress reported to
// the pane's footer), on Qt's offscreen platform; with --archive, the top of
// the archive PATH as Enter on it shows it; with --ftp, the remote folder of
// the stored session PATH ("<name>.ftp"), connecting as 602 does. Prints, one
// per line:
//   list_ms      from the request to the rows being shown
//   rss_mb       growth of resident memory over that listing
//   row_bytes    that growth per row
//   sort_ms      sorting the rows again by size
//   typeahead_ms handling a type-ahead key that matches no row (a full scan)
//   pagedown_ms  handling Page Down
//   filterkey_ms handling a key typed into the filter's field ("7", which
//                about half the rows hold)
//   filter_ms    from that key to the filtered rows being shown
//   filterbusy_ms the longest the GUI thread spent on one event meanwhile
//   rows         how many rows were shown
// With --burst, COUNT files are then created in PATH by another thread while
// the pane shows it, and removed again at the end:
//   burst_ms     from the last creation to the last new row being shown
//   busy_ms      the longest the GUI thread spent on one event meanwhile

#include "BenchSupport.h"
#include "panes/DirPane.h"
#include "panes/DirView.h"
#include "panes/KsFtr.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "platform/AlertRecorder.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Times every event the GUI thread handles at the outermost level: the
// longest of them is how long the window could not answer.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (fDepth++ > 0) {
            const bool handled = QApplication::notify(receiver, event);
            fDepth--;
            return handled;
        }
        const auto start = Clock::now();
        const bool handled = QApplication::notify(receiver, event);
        fDepth--;
        const double took = Milliseconds(start);
        if (took > fLongest) {
            fLongest = took;
            fLongestType = int(event->type());
        }
        return handled;
    }

    double TakeLongest() { return std::exchange(fLongest, 0.0); }
    // The QEvent type of the longest event since TakeLongest.
    int LongestType() const { return fLongestType; }

private:
    int fDepth = 0;
    double fLongest = 0;
    int fLongestType = 0;
};

// The time the list takes to handle one key press.
double KeyMilliseconds(QWidget *list, int key, const QString &text)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    const auto start = Clock::now();
    QApplication::sendEvent(list, &press);
    return Milliseconds(start);
}

struct FilterTimes
{
    double key = 0;
    double shown = 0;
    double busy = 0;
};

// Types one key into the pane's filter field, then lets the event loop run
// until the filtered rows are shown; the filter is cleared again after.
FilterTimes FilterKey(TimedApplication &app, kestrin::DirPane &pane)
{
    pane.OpenFilter();
    QLineEdit *field = pane.Footer()->FilterField();
    QCoreApplication::processEvents();
    app.TakeLongest();
    FilterTimes times;
    const auto start = Clock::now();
    times.key = KeyMilliseconds(field, Qt::Key_7, "7");
    const kestrin::RowFilter &filter = pane.Model().Filter();
    while (filter.IsPending())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    QCoreApplication::processEvents();
    times.shown = Milliseconds(start);
    times.busy = app.TakeLongest();
    KeyMilliseconds(field, Qt::Key_Escape, "");
    while (filter.IsPending())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    return times;
}

std::string BurstName(const std::string &folder, int i)
{
    char leaf[32];
    snprintf(leaf, sizeof leaf, "/burst%06d", i);
    return folder + leaf;
}

// Creates `count` files in `folder` while the pane shows it; answers the
// milliseconds from the last creation to the rows being shown, and the
// longest event in the meantime in `busy`.
double Burst(TimedApplication &app,
             kestrin::DirView *list,
             const std::string &folder,
             int count,
             double *busy)
{
    const int expected = list->CountItems() + count;
    std::atomic<bool> created{false};
    Clock::time_point lastCreated;
    app.TakeLongest();
    std::thread creator([&] {
        for (int i = 0; i < count; i++)
            close(open(BurstName(folder, i).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        lastCreated = Clock::now();
        created = true;
    });
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (created && list->CountItems() >= expected)
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    const double applied = Milliseconds(lastCreated);
    fprintf(stderr, "longest event: type %d\n", app.LongestType());
    *busy = app.TakeLongest();
    creator.join();
    return applied;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    const bool archive = argc == 3 && mode == "--archive";
    const bool ftp = argc == 3 && mode == "--ftp";
    const int burst = argc == 4 && mode == "--burst" ? atoi(argv[2]) : 0;
    if (argc != 2 && !archive && !ftp && burst <= 0) {
        fprintf(stderr,
                "usage: kestrin-pane-driver [--archive | --ftp] PATH\n"
                "       kestrin-pane-driver --burst COUNT PATH\n");
        return 2;
    }
    const std::string path = argv[argc - 1];
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TimedApplication app(argc, argv);
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
    const auto start = Clock::now();
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
    const int rows = list->CountItems();

    const auto sortStart = Clock::now();
    list->SetSortMode(kestrin::kColumnSize, kestrin::Ascending);
    QCoreApplication::processEvents();
    const double sorted = Milliseconds(sortStart);

    list->Select(0);
    const double typeAhead = KeyMilliseconds(list, Qt::Key_Z, "z");
    const double pageDown = KeyMilliseconds(list, Qt::Key_PageDown, "");
    const FilterTimes filter = FilterKey(app, pane);

    printf("list_ms %.1f\nrss_mb %.1f\nrow_bytes %.0f\nsort_ms %.1f\ntypeahead_ms %.2f\n"
           "pagedown_ms %.2f\nfilterkey_ms %.2f\nfilter_ms %.1f\nfilterbusy_ms %.1f\nrows %d\n",
           listed,
           growth,
           rows > 0 ? growth * 1024 * 1024 / rows : 0.0,
           sorted,
           typeAhead,
           pageDown,
           filter.key,
           filter.shown,
           filter.busy,
           rows);
    if (burst > 0) {
        double busy = 0;
        const double applied = Burst(app, list, path, burst, &busy);
        printf("burst_ms %.1f\nbusy_ms %.1f\n", applied, busy);
        list->Clear();
        for (int i = 0; i < burst; i++)
            unlink(BurstName(path, i).c_str());
    }
    fflush(stdout);
    return alerts.Count() == 0 ? 0 : 1;
}
