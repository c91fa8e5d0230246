#include "app/AppInfo.h"
#include "mainwindow/FileManagerBus.h"
#include "mainwindow/KestrinApplication.h"
#include "mainwindow/StartupMarker.h"
#include "widgets/MessageBoxSink.h"

#include <QApplication>
#include <chrono>
#include <cstdio>

int main(int argc, char **argv)
{
    const auto start = std::chrono::steady_clock::now();
    QApplication app(argc, argv);
    QApplication::setApplicationName(kestrin::kProductName);
    QApplication::setApplicationVersion(kestrin::kVersion);
    // Matches the installed kestrin.desktop, so the desktop shows its icon
    // and name for Kestrin's windows.
    QGuiApplication::setDesktopFileName("kestrin");
    // The main window ends Kestrin when it closes, after saving its layout;
    // copy windows left open must not keep Kestrin running.
    QApplication::setQuitOnLastWindowClosed(false);
    kestrin::MessageBoxSink::Install();

    std::vector<std::string> arguments;
    for (int i = 1; i < argc; i++)
        arguments.emplace_back(argv[i]);
    // One Kestrin a session: a second start only hands its arguments over.
    // It never runs beside the first, whose settings it would overwrite.
    using HandOver = kestrin::FileManagerBus::HandOver;
    const QDBusConnection bus = kestrin::FileManagerBus::SessionBus();
    std::string why;
    switch (kestrin::FileManagerBus::HandOverToRunning(bus, arguments, &why)) {
    case HandOver::HandedOver:
        return 0;
    case HandOver::Refused:
        std::fprintf(stderr, "kestrin: %s\n", why.c_str());
        return 1;
    case HandOver::Alone:
        break;
    }

    kestrin::KestrinApplication kestrin;
    if (kestrin::StartupMarker::Wanted())
        new kestrin::StartupMarker(kestrin.Window(), start); // a child of the window
    kestrin.ArgvReceived(arguments);
    const kestrin::FileManagerBus service(bus, &kestrin);
    QApplication::exec();
    return 0;
}
