#include "panes/DesktopBookmarks.h"

#include "platform/PathNames.h"
#include "platform/Paths.h"

#include <QFile>
#include <QUrl>
#include <QXmlStreamReader>
#include <algorithm>

namespace kestrin {

namespace {

// A bookmarks file is small; anything bigger is not read past this.
constexpr qint64 kMostBytes = 256 * 1024;

// The local path of a file:// address (percent-encoding undone); empty for
// any other address, or a file on another host.
std::string LocalPath(const std::string &address)
{
    const QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(address), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != "file"
        || !(url.host().isEmpty() || url.host() == "localhost"))
        return {};
    const std::string path = url.path(QUrl::FullyDecoded).toStdString();
    return path.starts_with('/') ? path : std::string();
}

void Keep(std::vector<DesktopBookmark> *bookmarks, std::string label, const std::string &path)
{
    if (path.empty())
        return;
    if (label.empty())
        label = path == "/" ? path : platform::LeafName(path);
    bookmarks->push_back({label, path});
}

std::string ReadSmallFile(const std::string &path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.read(kMostBytes).toStdString();
}

// What a <bookmark> element holds: its title and whether KDE hides it.
void ReadXbelBookmark(QXmlStreamReader &xml, std::string *title, bool *hidden)
{
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::EndElement) {
            depth--;
            continue;
        }
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (depth == 1 && xml.name() == u"title") {
            *title = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
        } else if (xml.name() == u"IsHidden") {
            *hidden = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed() == u"true";
        } else {
            depth++;
        }
    }
}

} // namespace

std::vector<DesktopBookmark> DesktopBookmarks::FromGtk(const std::string &text)
{
    std::vector<DesktopBookmark> bookmarks;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        // The address holds no blank (it is percent-encoded); the label,
        // after the first blank, may hold several.
        const size_t blank = line.find(' ');
        const std::string address = line.substr(0, blank);
        const std::string label = blank == std::string::npos ? "" : line.substr(blank + 1);
        Keep(&bookmarks, label, LocalPath(address));
    }
    return bookmarks;
}

std::vector<DesktopBookmark> DesktopBookmarks::FromXbel(const std::string &text)
{
    std::vector<DesktopBookmark> bookmarks;
    QXmlStreamReader xml(QByteArray::fromStdString(text));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != u"bookmark")
            continue;
        const std::string path = LocalPath(xml.attributes().value("href").toString().toStdString());
        std::string title;
        bool hidden = false;
        ReadXbelBookmark(xml, &title, &hidden);
        if (!hidden)
            Keep(&bookmarks, title, path);
    }
    return bookmarks;
}

std::vector<DesktopBookmark> DesktopBookmarks::Read()
{
    std::vector<DesktopBookmark> bookmarks;
    std::string folder;
    if (platform::FindDirectory(platform::DirectoryWhich::UserSettings, &folder) == B_OK)
        bookmarks = FromGtk(ReadSmallFile(folder + "/gtk-3.0/bookmarks"));
    if (platform::FindDirectory(platform::DirectoryWhich::UserData, &folder) == B_OK) {
        for (DesktopBookmark &bookmark : FromXbel(ReadSmallFile(folder + "/user-places.xbel"))) {
            if (std::none_of(bookmarks.begin(), bookmarks.end(), [&bookmark](const auto &each) {
                    return each.path == bookmark.path;
                }))
                bookmarks.push_back(std::move(bookmark));
        }
    }
    return bookmarks;
}

} // namespace kestrin
