#include "panes/TypedPlace.h"

#include "fileops/FileType.h"
#include "ftp/FtpSession.h"
#include "panes/ArchiveSource.h"
#include "panes/FolderSource.h"
#include "panes/SavedPlace.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"

#include <QDir>
#include <QUrl>
#include <algorithm>
#include <cctype>

namespace kestrin {

namespace {

std::string Trimmed(const std::string &text)
{
    const auto blank = [](unsigned char c) { return std::isspace(c) != 0; };
    const auto begin = std::find_if_not(text.begin(), text.end(), blank);
    const auto end = std::find_if_not(text.rbegin(), text.rend(), blank).base();
    return begin < end ? std::string(begin, end) : std::string();
}

// What a paste brings is often a whole line, or a list of addresses one to
// a line: the first line with something on it names the place.
std::string FirstLine(const std::string &typed)
{
    size_t start = 0;
    while (start <= typed.size()) {
        const size_t end = std::min(typed.find('\n', start), typed.size());
        std::string line = Trimmed(typed.substr(start, end - start));
        if (!line.empty())
            return line;
        start = end + 1;
    }
    return {};
}

// A path copied from a shell often comes quoted.
std::string Unquoted(const std::string &text)
{
    if (text.size() >= 2 && text.front() == text.back()
        && (text.front() == '\'' || text.front() == '"'))
        return text.substr(1, text.size() - 2);
    return text;
}

std::string Home()
{
    std::string home;
    if (platform::FindDirectory(platform::DirectoryWhich::Home, &home) != B_OK || home.empty())
        return "/";
    return home;
}

bool NameChar(char c, bool first)
{
    return c == '_' || std::isalpha(static_cast<unsigned char>(c))
           || (!first && std::isdigit(static_cast<unsigned char>(c)));
}

// `$NAME` and `${NAME}` as the shell reads them; a variable that is not set
// stays as typed, so that the path shows what is missing.
std::string WithVariables(const std::string &text)
{
    std::string out;
    size_t at = 0;
    while (at < text.size()) {
        if (text[at] != '$' || at + 1 >= text.size()) {
            out += text[at++];
            continue;
        }
        const bool braced = text[at + 1] == '{';
        const size_t start = at + (braced ? 2 : 1);
        size_t end = start;
        while (end < text.size() && NameChar(text[end], end == start))
            ++end;
        const bool closed = !braced || (end < text.size() && text[end] == '}');
        const std::string name = text.substr(start, end - start);
        if (name.empty() || !closed || !qEnvironmentVariableIsSet(name.c_str())) {
            out += text[at++];
            continue;
        }
        out += qEnvironmentVariable(name.c_str()).toStdString();
        at = braced ? end + 1 : end;
    }
    return out;
}

std::vector<std::string> Names(const std::string &path)
{
    std::vector<std::string> names;
    size_t start = 1;
    while (start < path.size()) {
        const size_t end = std::min(path.find('/', start), path.size());
        names.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

TypedPlace Found(TypedPlace::Kind kind, std::string path, std::string inside = {})
{
    TypedPlace place;
    place.kind = kind;
    place.path = std::move(path);
    place.inside = std::move(inside);
    return place;
}

// A name alone that is no entry of the pane's folder may be a stored
// session's.
bool MayBeSession(const std::string &text)
{
    return !text.empty() && text.find('/') == std::string::npos && text[0] != '~'
           && text[0] != '$' && text[0] != '.';
}

} // namespace

std::string TypedPlace::Expand(const std::string &typed, const std::string &standing)
{
    std::string text = Unquoted(FirstLine(typed));
    if (text.empty())
        return {};
    if (text.rfind("file:", 0) == 0) {
        const QUrl url(QString::fromStdString(text));
        if (url.isLocalFile())
            text = url.toLocalFile().toStdString();
    } else {
        if (text == "~" || text.rfind("~/", 0) == 0)
            text = Home() + text.substr(1);
        text = WithVariables(text);
    }
    if (text.empty())
        return {};
    const bool folderMeant = text.back() == '/';
    if (text[0] != '/')
        text = platform::JoinPath(standing.empty() ? "/" : standing, text);
    text = QDir::cleanPath(QString::fromStdString(text)).toStdString();
    if (folderMeant && text != "/")
        text += '/';
    return text;
}

TypedPlace TypedPlace::Read(const std::string &typed, const std::string &standing)
{
    std::string path = Expand(typed, standing);
    if (path.empty())
        return {};
    const bool folderMeant = path.size() > 1 && path.back() == '/';
    if (folderMeant)
        path.pop_back();
    const std::vector<std::string> names = Names(path);
    std::string current = "/";
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string next = platform::JoinPath(current, names[i]);
        struct stat info;
        const bool there = platform::StatPath(next, &info) == B_OK;
        if (there && S_ISDIR(info.st_mode)) {
            current = next;
            continue;
        }
        const bool last = i + 1 == names.size();
        if (there && last && !folderMeant)
            return Found(Kind::File, current, names[i]);
        if (there && FileType::IsArchive(FileType::Of(next))) {
            std::string inside;
            for (size_t j = i + 1; j < names.size(); ++j)
                inside += names[j] + "/";
            return Found(Kind::Archive, next, inside);
        }
        const std::string text = Unquoted(FirstLine(typed));
        if (!there && MayBeSession(text)) {
            const std::string session = FtpSession::FileOfSavedPlace(text);
            if (!session.empty())
                return Found(Kind::Session, session);
        }
        TypedPlace missing = Found(Kind::Missing, folderMeant ? path + "/" : path);
        missing.found = current;
        missing.missing = names[i];
        missing.missingIsFile = there;
        return missing;
    }
    return Found(Kind::Folder, current);
}

size_t TypedPlace::MissingAt() const
{
    return found.size() + (found == "/" ? 0 : 1);
}

std::string TypedPlace::Problem() const
{
    if (kind != Kind::Missing)
        return {};
    if (missingIsFile)
        return "\"" + missing + "\" is a file, not a folder";
    return "\"" + missing + "\" not found in " + found;
}

std::unique_ptr<PaneSource> TypedPlace::Source(const std::string &standing,
                                               std::string *selectAfter) const
{
    switch (kind) {
    case Kind::Folder:
        return std::make_unique<FolderSource>(path);
    case Kind::File:
        if (selectAfter != nullptr)
            *selectAfter = inside;
        return std::make_unique<FolderSource>(path);
    case Kind::Archive: {
        // Up from the archive's top leads to the folder that holds it.
        const std::string folder = platform::ParentPath(path);
        return std::make_unique<ArchiveSource>(
            path,
            folder,
            [folder] { return std::make_unique<FolderSource>(folder); },
            inside);
    }
    case Kind::Session:
        return SavedPlace::Session(path, standing);
    default:
        return nullptr;
    }
}

std::vector<std::string> TypedPlace::FolderNames(const std::string &folder,
                                                 const std::atomic<bool> &stop)
{
    platform::FolderScan scan(folder);
    if (scan.InitCheck() != B_OK)
        return {};
    scan.ReadNames();
    std::vector<platform::ScannedEntry> entries;
    if (scan.StatEntries(&entries, &stop) == B_CANCELED)
        return {};
    std::vector<std::string> names;
    for (const platform::ScannedEntry &entry : entries) {
        const bool linkToFolder = S_ISLNK(entry.info.st_mode) && entry.targetKnown
                                  && S_ISDIR(entry.targetMode);
        if (S_ISDIR(entry.info.st_mode) || linkToFolder)
            names.push_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace kestrin
