#include "mainwindow/KestrinApplication.h"

#include "app/AppInfo.h"
#include "mainwindow/KestrinWindow.h"
#include "platform/Paths.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QScreen>
#include <QUrl>

namespace kestrin {

namespace {

constexpr int kIconSizes[] = {16, 22, 24, 32, 48, 64, 128, 256};

} // namespace

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
    // Reading the icon's files can wait until the window is on the screen.
    QObject::connect(fWindow.get(), &KestrinWindow::FirstPainted, fWindow.get(), [] {
        QApplication::setWindowIcon(Icon());
    });
}

std::vector<std::string> KestrinApplication::IconFiles()
{
    std::vector<std::string> files;
    std::string folder;
    if (platform::FindDirectory(platform::DirectoryWhich::Icons, &folder) != B_OK)
        return files;
    for (const int size : kIconSizes) {
        const std::string file = folder + "/" + std::to_string(size) + "x" + std::to_string(size)
                                 + "/apps/kestrin.png";
        if (QFileInfo::exists(QString::fromStdString(file)))
            files.push_back(file);
    }
    return files;
}

QIcon KestrinApplication::Icon()
{
    // Kestrin's own files rather than the icon theme: the theme is the
    // desktop's, and an icon installed in another prefix is not in it.
    QIcon icon;
    for (const std::string &file : IconFiles())
        icon.addFile(QString::fromStdString(file));
    return icon;
}

KestrinApplication::~KestrinApplication() = default;

std::string KestrinApplication::ArgumentPath(const std::string &argument)
{
    const QString text = QFile::decodeName(argument.c_str());
    // A file whose name merely looks like a URL is that file.
    if (QFileInfo::exists(text))
        return argument;
    const QUrl url(text, QUrl::StrictMode);
    if (url.isLocalFile())
        return QFile::encodeName(url.toLocalFile()).toStdString();
    if (url.isValid() && !url.scheme().isEmpty())
        return std::string();
    return argument;
}

void KestrinApplication::ArgvReceived(const std::vector<std::string> &arguments)
{
    for (const std::string &argument : arguments) {
        if (const std::string path = ArgumentPath(argument); !path.empty())
            fWindow->SetPath(path);
    }
}

void KestrinApplication::RefsReceived(const platform::Message &message)
{
    fWindow->RefsReceived(message);
}

} // namespace kestrin
