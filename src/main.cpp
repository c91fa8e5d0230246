#include "app/AppInfo.h"
#include "mainwindow/KestrinApplication.h"
#include "widgets/MessageBoxSink.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(kestrin::kProductName);
    QApplication::setApplicationVersion(kestrin::kVersion);
    // The main window ends Kestrin when it closes, after saving its layout;
    // copy windows left open must not keep Kestrin running.
    QApplication::setQuitOnLastWindowClosed(false);
    kestrin::MessageBoxSink::Install();

    kestrin::KestrinApplication kestrin;
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; i++)
        arguments.emplace_back(argv[i]);
    kestrin.ArgvReceived(arguments);
    QApplication::exec();
    return 0;
}
