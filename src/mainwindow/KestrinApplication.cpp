#include "mainwindow/KestrinApplication.h"

#include "app/AppInfo.h"
#include "mainwindow/KestrinWindow.h"
#include "platform/Entry.h"

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
    type_code type = 0;
    int32_t count = 0;
    if (message.GetInfo("refs", &type, &count) != B_OK || type != B_REF_TYPE)
        return;
    for (int32_t i = count - 1; i >= 0; i--) {
        entry_ref ref;
        std::string path;
        if (message.FindRef("refs", i, &ref) != B_OK)
            continue;
        const platform::Entry entry(ref);
        if (entry.InitCheck() != B_OK || entry.GetPath(&path) != B_OK)
            continue;
        fWindow->SetPath(path);
    }
}

} // namespace kestrin
