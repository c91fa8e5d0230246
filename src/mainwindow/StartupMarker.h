#pragma once

#include <QObject>
#include <chrono>

namespace kestrin {

class KestrinWindow;

// Kestrin's start-up, timed from within (KESTRIN_STARTUP_MARKER set): prints
//     kestrin-startup first-paint MS
//     kestrin-startup panes-filled MS
// counted from `start` (taken first thing in main), then where the installed
// files were found (help, add-ons, icon), and quits. The benchmark and the
// test of an installed tree read these lines.
//
// GUI thread only. A child of the window it watches.
class StartupMarker : public QObject
{
    Q_OBJECT

public:
    static bool Wanted();

    StartupMarker(KestrinWindow *window, std::chrono::steady_clock::time_point start);

private:
    void Check();
    long Elapsed() const;
    void Report();

    KestrinWindow *fWindow;
    std::chrono::steady_clock::time_point fStart;
    bool fPainted = false;
    bool fDone = false;
};

} // namespace kestrin
