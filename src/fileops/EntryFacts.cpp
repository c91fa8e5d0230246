#include "fileops/EntryFacts.h"

#include "app/EntryTexts.h"
#include "app/NumberText.h"
#include "fileops/FileType.h"
#include "platform/Entry.h"
#include "platform/Node.h"
#include "platform/PathNames.h"
#include "platform/VolumeRoster.h"

#include <cstdio>
#include <optional>
#include <sys/stat.h>

namespace kestrin {

namespace {

std::string SizeText(int64_t size)
{
    char text[32];
    GetSizeString(size, text);
    return text;
}

std::string KindText(const std::string &path, EntryFacts::Kind kind)
{
    if (kind == EntryFacts::Kind::Link)
        return "Symbolic Link";
    if (kind == EntryFacts::Kind::Volume)
        return "Volume";
    // A folder has a type only when one was given to it; the MIME
    // database's own answer for folders is no description of one.
    std::string type;
    if (kind == EntryFacts::Kind::Folder)
        platform::Node(path).ReadAttrString("BEOS:TYPE", &type);
    else
        type = FileType::Of(path);
    if (FileType::IsUnknown(type))
        return kind == EntryFacts::Kind::Folder ? "Folder" : "Generic File";
    const std::string description = FileType::Description(type);
    return description.empty() ? type : description;
}

} // namespace

EntryFacts EntryFacts::Read(const std::string &path, const std::string &dateFormat)
{
    EntryFacts facts;
    facts.path = path;
    facts.name = path == "/" ? "/" : platform::LeafName(path);
    const platform::Entry entry(path);
    struct stat info = {};
    entry.GetStat(&info);
    std::optional<platform::Volume> volume;
    if (S_ISLNK(info.st_mode))
        facts.kind = Kind::Link;
    else if (S_ISDIR(info.st_mode) && (volume = platform::VolumeRoster::ForMountPath(path)))
        facts.kind = Kind::Volume;
    else if (S_ISDIR(info.st_mode))
        facts.kind = Kind::Folder;

    if (facts.kind == Kind::Volume)
        facts.sizeText = VolumeSizeText(volume->Capacity(), volume->FreeBytes());
    else if (facts.kind != Kind::Folder)
        facts.sizeText = SizeText(int64_t(info.st_size));

    time_t created = 0;
    entry.GetCreationTime(&created);
    facts.created = EntryTexts::DateText(created, dateFormat);
    facts.modified = EntryTexts::DateText(info.st_mtime, dateFormat);
    facts.kindText = KindText(path, facts.kind);
    if (facts.kind == Kind::Link) {
        const platform::Entry target(path, true);
        if (target.Exists())
            target.GetPath(&facts.linkTo);
    }
    facts.attributes = AttributeText::Read(path);
    return facts;
}

std::string EntryFacts::FolderSizeText(double size, int32_t count)
{
    char files[32];
    snprintf(files, sizeof files, " (%d files)", count);
    return SizeText(int64_t(size)) + files;
}

std::string EntryFacts::VolumeSizeText(int64_t capacity, int64_t freeBytes)
{
    return SizeText(capacity) + "(" + SizeText(capacity - freeBytes) + " used -- "
           + SizeText(freeBytes) + " free)";
}

} // namespace kestrin
