#include "app/AppInfo.h"
#include "app/StartOptions.h"
#include "mainwindow/FileManagerBus.h"
#include "mainwindow/KestrinApplication.h"
#include "mainwindow/StartupMarker.h"
#include "widgets/MessageBoxSink.h"

#include <QApplication>
#include <chrono>
#include <cstdio>

namespace {

std::vector<std::string> Arguments(int argc, char **argv)
{
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; i++)
        arguments.emplace_back(argv[i]);
    return arguments;
}

// Help and the version are printed before Qt looks for a display, so that
// they work where there is none, as in a terminal over ssh.
bool AnsweredWithoutWindow(int argc, char **argv)
{
    const kestrin::StartOptions options(Arguments(argc, argv));
    const auto action = options.GetAction();
    if (action != kestrin::StartOptions::Action::Help
        && action != kestrin::StartOptions::Action::Version)
        return false;
    std::fputs(options.Text().c_str(), stdout);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const auto start = std::chrono::steady_clock::now();
    if (AnsweredWithoutWindow(argc, argv))
        return 0;
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

    // Only now are Qt's own options (-platform, -style...) out of argv.
    const kestrin::StartOptions options(Arguments(argc, argv));
    if (options.GetAction() == kestrin::StartOptions::Action::UnknownOption) {
        std::fputs(options.Text().c_str(), stderr);
        return 2;
    }
    // One Kestrin a session: a second start only hands its arguments over.
    // It never runs beside the first, whose settings it would overwrite.
    using HandOver = kestrin::FileManagerBus::HandOver;
    const QDBusConnection bus = kestrin::FileManagerBus::SessionBus();
    std::string why;
    switch (kestrin::FileManagerBus::HandOverToRunning(bus, options.Paths(), &why)) {
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
    kestrin.ArgvReceived(options.Paths());
    const kestrin::FileManagerBus service(bus, &kestrin);
    QApplication::exec();
    return 0;
}
