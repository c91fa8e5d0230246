#include "mainwindow/StartupMarker.h"

#include "mainwindow/AddOns.h"
#include "mainwindow/KestrinApplication.h"
#include "mainwindow/KestrinWindow.h"
#include "panes/DirPane.h"
#include "panes/PaneModel.h"
#include "platform/AddOnRunner.h"
#include "platform/Paths.h"

#include <QCoreApplication>
#include <cstdio>

namespace kestrin {

bool StartupMarker::Wanted()
{
    return !qEnvironmentVariableIsEmpty("KESTRIN_STARTUP_MARKER");
}

StartupMarker::StartupMarker(KestrinWindow *window, std::chrono::steady_clock::time_point start)
    : QObject(window)
    , fWindow(window)
    , fStart(start)
{
    connect(window, &KestrinWindow::FirstPainted, this, [this] {
        fPainted = true;
        std::printf("kestrin-startup first-paint %ld\n", Elapsed());
        std::fflush(stdout);
        Check();
    });
    for (DirPane *pane : window->Panes())
        connect(&pane->Model(), &PaneModel::ListingFinished, this, &StartupMarker::Check);
}

long StartupMarker::Elapsed() const
{
    using namespace std::chrono;
    return long(duration_cast<milliseconds>(steady_clock::now() - fStart).count());
}

void StartupMarker::Check()
{
    if (!fPainted || fDone)
        return;
    for (const DirPane *pane : fWindow->Panes()) {
        if (pane->Model().IsListing())
            return;
    }
    fDone = true;
    std::printf("kestrin-startup panes-filled %ld rows", Elapsed());
    for (const DirPane *pane : fWindow->Panes())
        std::printf(" %d", int(pane->Model().List().CountItems()));
    std::printf("\n");
    Report();
    std::fflush(stdout);
    QCoreApplication::quit();
}

void StartupMarker::Report()
{
    std::string help;
    platform::FindDirectory(platform::DirectoryWhich::Help, &help);
    std::printf("kestrin-startup help %s\n", help.c_str());
    std::printf("kestrin-startup add-on-host %s\n", platform::AddOnRunner::HostPath().c_str());
    for (const AddOns::Item &item : AddOns::Find())
        std::printf("kestrin-startup add-on %s\n", item.path.c_str());
    for (const std::string &file : KestrinApplication::IconFiles())
        std::printf("kestrin-startup icon %s\n", file.c_str());
}

} // namespace kestrin
