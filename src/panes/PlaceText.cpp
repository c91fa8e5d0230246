#include "panes/PlaceText.h"

#include <string_view>

namespace kestrin {

namespace {

constexpr std::string_view kArchive = "archive:";
constexpr char kApart = '\t';

std::pair<std::string, std::string> Split(const std::string &text)
{
    const size_t apart = text.find(kApart);
    if (apart == std::string::npos)
        return {text, {}};
    return {text.substr(0, apart), text.substr(apart + 1)};
}

} // namespace

std::string PlaceText::ArchivePlace(const std::string &archive, const std::string &inside)
{
    return std::string(kArchive) + archive + kApart + inside;
}

bool PlaceText::IsArchivePlace(const std::string &text)
{
    return text.starts_with(kArchive) && text.size() > kArchive.size()
           && text[kArchive.size()] == '/';
}

std::pair<std::string, std::string> PlaceText::ArchiveParts(const std::string &text)
{
    return Split(text.substr(kArchive.size()));
}

std::string PlaceText::ServerPlace(const std::string &session, const std::string &remoteFolder)
{
    return remoteFolder.empty() ? session : session + kApart + remoteFolder;
}

std::pair<std::string, std::string> PlaceText::ServerParts(const std::string &text)
{
    return Split(text);
}

std::string PlaceText::Title(const std::string &text)
{
    if (IsArchivePlace(text)) {
        const auto [archive, inside] = ArchiveParts(text);
        return inside.empty() ? archive : archive + "/" + inside;
    }
    if (text.empty() || text[0] == '/')
        return text;
    const auto [session, folder] = ServerParts(text);
    return folder.empty() ? session : session + ": " + folder;
}

} // namespace kestrin
