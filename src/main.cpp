#include "app/AppInfo.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(kestrin::kProductName);
    QApplication::setApplicationVersion(kestrin::kVersion);

    QWidget window;
    window.setWindowTitle(kestrin::kWindowTitle);
    // The main screen's frame, inset as Kestrin has always opened: 10 from the
    // left, 40 from the top, 20 from the right and 50 from the bottom.
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    window.setGeometry(screen.adjusted(10, 40, -20, -50));
    window.show();
    return QApplication::exec();
}
