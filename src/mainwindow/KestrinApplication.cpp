#include "mainwindow/KestrinApplication.h"

#include "app/AppInfo.h"
#include "mainwindow/KestrinWindow.h"

#include <QGuiApplication>
#include <QScreen>

namespace kestrin {

QRect KestrinApplication::InitialFrame(const QRect &screen)
{
    return screen.adjusted(10, 40, -20, -50);
}

KestrinApplication::KestrinApplication()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect frame = InitialFrame(screen != nullptr ? screen->geometry() : QRect(0, 0, 640, 480));
    fWindow = std::make_unique<KestrinWindow>(frame, kWindowTitle);
    fWindow->GetSettings();
    fWindow->FocusFirst();
    // Written at once, so the settings file exists from the first start on.
    fWindow->SaveSettings();
    fWindow->show();
    fWindow->activateWindow();
}

KestrinApplication::~KestrinApplication() = default;

void KestrinApplication::ArgvReceived(const std::vector<std::string> &arguments)
{
    for (const std::string &argument : arguments)
        fWindow->SetPath(argument);
}

void KestrinApplication::RefsReceived(const platform::Message &message)
{
    fWindow->RefsReceived(message);
}

} // namespace kestrin
