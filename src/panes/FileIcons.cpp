#include "panes/FileIcons.h"

#include <QApplication>
#include <QMimeDatabase>
#include <QStandardPaths>
#include <QStyle>
#include <functional>
#include <sys/stat.h>
#include <unordered_map>

namespace kestrin {

namespace {

// Node-based, so the references handed out stay valid as it grows.
std::unordered_map<std::string, QIcon> &Cache()
{
    static std::unordered_map<std::string, QIcon> cache;
    return cache;
}

QIcon Themed(const QString &name, const QString &fallbackName, QStyle::StandardPixmap fallback)
{
    QIcon icon = QIcon::fromTheme(name);
    if (icon.isNull() && !fallbackName.isEmpty())
        icon = QIcon::fromTheme(fallbackName);
    if (icon.isNull())
        icon = QApplication::style()->standardIcon(fallback);
    return icon;
}

const QIcon &Cached(const std::string &key, const std::function<QIcon()> &make)
{
    static const bool themeChosen = (FileIcons::ChooseTheme(), true);
    (void) themeChosen;
    auto found = Cache().find(key);
    if (found == Cache().end())
        found = Cache().emplace(key, make()).first;
    return found->second;
}

} // namespace

void FileIcons::ChooseTheme()
{
    // A plain window manager names no theme (Qt then says "hicolor", which
    // holds almost no type icons) and every file would get the same blank
    // icon: Kestrin brings a theme of its own for that case, and lets it
    // fill the gaps of whatever theme the desktop names.
    // Without a desktop's platform theme Qt searches its resources only.
    QStringList paths = QIcon::themeSearchPaths();
    for (const QString &folder : QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                           "icons",
                                                           QStandardPaths::LocateDirectory)) {
        if (!paths.contains(folder))
            paths.append(folder);
    }
    QIcon::setThemeSearchPaths(paths);
    const QString named = QIcon::themeName();
    if (named.isEmpty() || named == "hicolor")
        QIcon::setThemeName(kFallbackTheme);
    if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == "hicolor")
        QIcon::setFallbackThemeName(kFallbackTheme);
}

const QIcon &FileIcons::Folder()
{
    return Cached("inode/directory",
                  [] { return Themed("folder", "inode-directory", QStyle::SP_DirIcon); });
}

const QIcon &FileIcons::ForEntry(const std::string &name, mode_t mode, bool isLink)
{
    if (S_ISDIR(mode))
        return isLink
                   ? Cached("link/directory",
                            [] { return Themed("folder-remote", "folder", QStyle::SP_DirLinkIcon); })
                   : Folder();
    if (!S_ISREG(mode) && mode != 0) {
        return Cached("inode/special", [] {
            return Themed("inode-x-generic", "text-x-generic", QStyle::SP_FileIcon);
        });
    }
    static QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(QString::fromUtf8(name.c_str()),
                                                    QMimeDatabase::MatchExtension);
    return Cached(type.name().toStdString(), [&type] {
        return Themed(type.iconName(), type.genericIconName(), QStyle::SP_FileIcon);
    });
}

} // namespace kestrin
