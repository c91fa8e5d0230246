#include "fileops/ClipboardEntries.h"

#include "fileops/FileOpsMessages.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"

#include <QByteArray>
#include <QMimeData>
#include <QSysInfo>
#include <QUrl>

namespace kestrin {

namespace {

constexpr char kUriList[] = "text/uri-list";
constexpr char kGnomeList[] = "x-special/gnome-copied-files";
constexpr char kKdeCut[] = "application/x-kde-cutselection";
constexpr char kFileScheme[] = "file://";

std::vector<std::string> Lines(const QByteArray &bytes)
{
    std::vector<std::string> lines;
    for (QByteArray line : bytes.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.isEmpty())
            lines.push_back(line.toStdString());
    }
    return lines;
}

// The local paths of file:// addresses (a uri-list's "#" comments are none).
std::vector<std::string> PathsOfUris(const std::vector<std::string> &uris)
{
    std::vector<std::string> paths;
    for (const std::string &uri : uris) {
        if (std::string path = ClipboardEntries::PathOfUri(uri); !path.empty())
            paths.push_back(std::move(path));
    }
    return paths;
}

// Plain text names entries only when every line is an entry's absolute path:
// a paragraph that happens to hold a path is no request to copy it.
std::vector<std::string> PathsOfText(const QString &text)
{
    std::vector<std::string> paths = Lines(text.toUtf8());
    for (const std::string &path : paths) {
        if (path.front() != '/' || !platform::Entry(path).Exists())
            return {};
    }
    return paths;
}

std::unique_ptr<QMimeData> TextOnly(const std::vector<std::string> &lines)
{
    QByteArray text;
    for (const std::string &line : lines)
        text += (text.isEmpty() ? "" : "\n") + QByteArray::fromStdString(line);
    auto data = std::make_unique<QMimeData>();
    data->setText(QString::fromUtf8(text));
    return data;
}

// A server's entry as an address other programs open: the password stays out.
// An ftp:// or sftp:// address, as the session's kind says; its port only
// where it is not the kind's own.
std::string FtpUrl(const FtpSession &session, const std::string &path)
{
    const bool sftp = session.kind == FtpSession::Kind::Sftp;
    QUrl url;
    url.setScheme(sftp ? "sftp" : "ftp");
    url.setUserName(QString::fromUtf8(session.user.c_str()));
    url.setHost(QString::fromUtf8(session.host.c_str()));
    if (session.PortNumber() != (sftp ? 22u : 21u))
        url.setPort(int(session.PortNumber()));
    url.setPath(QString::fromUtf8(path.c_str()));
    return url.toEncoded().toStdString();
}

platform::Alert CutRefusal(const char *text)
{
    return {"Cut to Clipboard", text, {"OK"}, B_WARNING_ALERT};
}

} // namespace

ClipboardEntries::Written ClipboardEntries::ForPlace(const TransferPlace &place,
                                                     Action action,
                                                     const std::vector<std::string> &paths)
{
    Written written;
    switch (place.kind) {
    case TransferPlace::Kind::Folder:
    case TransferPlace::Kind::QueryResults:
        written.data = ClipboardEntries{action, paths}.Mime();
        break;
    // No other program can take these as files: their paths go as text,
    // which Go to Path and a browser understand, and nothing is cut.
    case TransferPlace::Kind::Archive:
        if (action == Action::Cut)
            written.refusal = CutRefusal("Members of an archive cannot be cut: the archive stays "
                                         "as it is. Copy to Clipboard copies their paths as text.");
        else
            written.data = TextOnly(paths);
        break;
    case TransferPlace::Kind::FtpFolder:
    case TransferPlace::Kind::SftpFolder: {
        if (action == Action::Cut) {
            written.refusal = CutRefusal(
                place.kind == TransferPlace::Kind::SftpFolder
                    ? "Files on an SFTP server cannot be cut: Copy to Clipboard copies their "
                      "sftp:// addresses as text."
                    : "Files on an FTP server cannot be cut: Copy to Clipboard copies their ftp:// "
                      "addresses as text.");
            break;
        }
        std::vector<std::string> urls;
        for (const std::string &path : paths)
            urls.push_back(FtpUrl(place.server.value_or(FtpSession{}), path));
        written.data = TextOnly(urls);
        break;
    }
    }
    return written;
}

std::unique_ptr<QMimeData> ClipboardEntries::Mime() const
{
    std::unique_ptr<QMimeData> data = TextOnly(paths);
    QByteArray uriList;
    QByteArray gnome = action == Action::Cut ? "cut" : "copy";
    for (const std::string &path : paths) {
        const QByteArray uri = QByteArray::fromStdString(FileUri(path));
        uriList += uri + "\r\n";
        gnome += "\n" + uri;
    }
    data->setData(kUriList, uriList);
    data->setData(kGnomeList, gnome);
    if (action == Action::Cut)
        data->setData(kKdeCut, "1");
    return data;
}

ClipboardEntries ClipboardEntries::Read(const QMimeData &data)
{
    ClipboardEntries entries;
    if (data.hasFormat(kGnomeList)) {
        std::vector<std::string> lines = Lines(data.data(kGnomeList));
        if (!lines.empty()) {
            entries.action = lines.front() == "cut" ? Action::Cut : Action::Copy;
            lines.erase(lines.begin());
            entries.paths = PathsOfUris(lines);
            return entries;
        }
    }
    if (data.hasFormat(kUriList)) {
        entries.paths = PathsOfUris(Lines(data.data(kUriList)));
        if (data.data(kKdeCut) == "1")
            entries.action = Action::Cut;
        return entries;
    }
    if (data.hasText())
        entries.paths = PathsOfText(data.text());
    return entries;
}

ClipboardEntries::Paste ClipboardEntries::PasteInto(const std::string &folder) const
{
    Paste paste;
    paste.request = platform::Message(kMsgCopyRequest);
    // Entry keeps a path's folder part resolved through links: so is the
    // folder compared with it.
    std::string here;
    if (!folder.empty() && platform::RealPath(folder, &here) != B_OK)
        here = folder;
    int32_t count = 0;
    for (const std::string &path : paths) {
        const platform::Entry entry(path);
        entry_ref ref;
        if (!entry.Exists() || entry.GetRef(&ref) != B_OK || platform::ParentPath(ref.path) == here)
            continue;
        if (count++ == 0)
            paste.request.AddString("From", platform::ParentPath(ref.path));
        paste.request.AddRef("refs", ref);
    }
    if (count == 0) {
        paste.refusal = platform::Alert{"Paste from Clipboard",
                                        paths.empty()
                                            ? "The clipboard holds no files or folders."
                                            : "The files and folders on the clipboard are "
                                              "already here, or no longer exist.",
                                        {"OK"},
                                        B_WARNING_ALERT};
        return paste;
    }
    paste.request.AddString("Dragging", "true");
    paste.request.AddString("Direction", "Right");
    paste.request.AddString("TypeOfCopy", action == Action::Cut ? "Move" : "Copy");
    return paste;
}

std::string ClipboardEntries::FileUri(const std::string &path)
{
    // Byte by byte, so that a name that is not UTF-8 comes back unchanged.
    return kFileScheme + QByteArray::fromStdString(path).toPercentEncoding("/").toStdString();
}

std::string ClipboardEntries::PathOfUri(const std::string &uri)
{
    const std::string scheme = kFileScheme;
    if (uri.compare(0, scheme.size(), scheme) != 0)
        return {};
    const size_t slash = uri.find('/', scheme.size());
    if (slash == std::string::npos)
        return {};
    const std::string host = uri.substr(scheme.size(), slash - scheme.size());
    if (!host.empty() && host != "localhost"
        && QString::fromStdString(host) != QSysInfo::machineHostName())
        return {};
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(uri.substr(slash)))
        .toStdString();
}

} // namespace kestrin
