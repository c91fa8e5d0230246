#include "fileops/ArchiveExtractor.h"

#include "app/AppUtils.h"
#include "fileops/ArchiveCallbacks.h"
#include "fileops/ArchiveReader.h"
#include "fileops/CopyControl.h"
#include "fileops/OverwritePolicy.h"
#include "platform/Entry.h"
#include "platform/PathNames.h"
#include "platform/Volume.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <climits>

namespace kestrin {

namespace {

// Modes and times as the archive has them; never through a link on disk, never
// up and out with "..". Owners are not restored (nor set-id bits with them).
constexpr int kDiskOptions = ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME
                             | ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT;

// How many refusals one alert names; the rest are counted.
constexpr size_t kRefusalsNamed = 5;

std::unordered_set<std::string> Strings(const platform::Message &request, const char *field)
{
    std::unordered_set<std::string> values;
    std::string value;
    for (int32_t i = 0; request.FindString(field, i, &value) == B_OK; i++)
        values.insert(value);
    return values;
}

// What Kestrin makes on disk: anything else from an archive (a device node
// above all, which root would make as asked) is refused.
bool IsMadeOnDisk(mode_t mode)
{
    return S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode);
}

std::string String(const platform::Message &request, const char *field)
{
    std::string value;
    request.FindString(field, &value);
    return value;
}

platform::Alert UnpackAlert(const std::string &text)
{
    return {"Unpacking", text, {"OK"}, B_WARNING_ALERT};
}

} // namespace

ArchiveExtractor::ArchiveExtractor(const platform::Message &request,
                                   std::string destination,
                                   CopyControl &control)
    : fArchive(String(request, "Archive"))
    , fFrom(String(request, "CopyFrom"))
    , fFolders(Strings(request, "ZipDir"))
    , fFiles(Strings(request, "ZipFile"))
    , fDestination(std::move(destination))
    , fControl(control)
{}

bool ArchiveExtractor::Chosen(const std::string &path, std::string *relative) const
{
    if (path.size() <= fFrom.size() || path.compare(0, fFrom.size(), fFrom) != 0)
        return false;
    std::string rest = path.substr(fFrom.size());
    // The member itself, or one of the folders it lies in.
    bool chosen = fFiles.count(rest) > 0 || fFolders.count(rest) > 0;
    for (size_t slash = rest.find('/'); !chosen && slash != std::string::npos;
         slash = rest.find('/', slash + 1))
        chosen = fFolders.count(rest.substr(0, slash)) > 0;
    if (chosen)
        *relative = std::move(rest);
    return chosen;
}

void ArchiveExtractor::Run()
{
    if (fArchive.empty() || (fFolders.empty() && fFiles.empty()))
        return;
    // Links in the destination's own path are resolved first: below it, no
    // link may be followed.
    std::string destination;
    if (status_t status = platform::RealPath(fDestination, &destination); status != B_OK) {
        CopyControl::ReportError(&fControl,
                                 UnpackAlert("Kestrin cannot unpack into \"" + fDestination
                                             + "\": the folder cannot be found."));
        return;
    }
    fDestination = destination;
    ArchiveReader reader(fArchive);
    if (reader.InitCheck() != B_OK) {
        CopyControl::ReportError(&fControl,
                                 UnpackAlert("Kestrin cannot read \"" + fArchive
                                             + "\" as an archive.\n" + reader.ErrorText()));
        return;
    }
    const auto total = int32_t(std::min<int64_t>(reader.FileSize() / 1024, INT32_MAX));
    fControl.BatchStarted(total,
                          "Unpacking " + std::to_string(fFolders.size() + fFiles.size())
                              + " files or directories",
                          std::to_string(total) + " K");

    OverwritePolicy overwrite(fControl);
    fOverwrite = &overwrite;
    fDisk = archive_write_disk_new();
    archive_write_disk_set_options(fDisk, kDiskOptions);
    ArchiveMember member;
    std::string relative;
    status_t status = B_OK;
    while (!fStopped && !overwrite.Cancelled() && !fControl.StopRequested()
           && (status = reader.Next(&member)) == B_OK) {
        if (Chosen(member.path, &relative) && Extract(reader, member, relative) == Outcome::End)
            break;
    }
    if (status != B_OK && status != B_ENTRY_NOT_FOUND)
        Refuse(fArchive, "the archive is damaged: " + reader.ErrorText());
    // Folders get their modes and times last, once nothing is written into
    // them any more.
    archive_write_close(fDisk);
    archive_write_free(fDisk);
    fDisk = nullptr;
    fOverwrite = nullptr;
    ReportRefusals();
}

ArchiveExtractor::Outcome ArchiveExtractor::Extract(ArchiveReader &reader,
                                                    const ArchiveMember &member,
                                                    const std::string &relative)
{
    if (!ArchiveReader::IsSafe(member.path) || !ArchiveReader::IsSafe(relative)) {
        Refuse(member.path, "its path leads outside the folder it is unpacked into");
        return Outcome::Next;
    }
    if (!IsMadeOnDisk(member.info.st_mode)) {
        Refuse(member.path, "it is a device, a pipe or a socket, not a file, a folder or a link");
        return Outcome::Next;
    }
    if (member.encrypted) {
        Refuse(member.path, "it is encrypted");
        return Outcome::Next;
    }
    struct archive_entry *header = reader.Header();
    if (!member.hardLinkTarget.empty()) {
        std::string linked;
        if (!ArchiveReader::IsSafe(member.hardLinkTarget)
            || !Chosen(member.hardLinkTarget, &linked)) {
            Refuse(member.path, "it is a hard link to a member that is not unpacked with it");
            return Outcome::Next;
        }
        archive_entry_set_hardlink(header, platform::JoinPath(fDestination, linked).c_str());
    }
    const std::string target = platform::JoinPath(fDestination, relative);
    if (!MayWrite(member, target))
        return Outcome::Next;
    if (!HasRoomFor(member, target))
        return Outcome::End;
    archive_entry_set_pathname(header, target.c_str());
    fControl.FileStarted(fArchive + "/" + member.path, target, double(member.info.st_size));
    if (archive_write_header(fDisk, header) < ARCHIVE_WARN) {
        Refuse(member.path, archive_error_string(fDisk));
        return Outcome::Next;
    }
    const Outcome outcome = S_ISREG(member.info.st_mode) && member.hardLinkTarget.empty()
                                ? CopyData(reader, member, target)
                                : Outcome::Next;
    const bool whole = archive_write_finish_entry(fDisk) >= ARCHIVE_WARN && outcome == Outcome::Next
                       && !fStopped;
    if (!whole && S_ISREG(member.info.st_mode))
        platform::Entry(target).Remove();
    return fStopped ? Outcome::End : outcome;
}

bool ArchiveExtractor::MayWrite(const ArchiveMember &member, const std::string &target)
{
    struct stat existing;
    if (platform::Entry(target).GetStat(&existing) != B_OK)
        return true;
    // Folders merge, as folders do when they are copied.
    if (S_ISDIR(existing.st_mode) && S_ISDIR(member.info.st_mode))
        return true;
    const bool replace = fOverwrite->ReplaceWith(fArchive + "/" + member.path,
                                                 double(member.info.st_size),
                                                 member.info.st_mtime,
                                                 target);
    if (replace)
        fControl.SetProgressVisible(true);
    return replace;
}

bool ArchiveExtractor::HasRoomFor(const ArchiveMember &member, const std::string &target)
{
    // The size the archive declares is all that is written of a member, so
    // a member that claims little cannot fill the disk; one that claims much
    // is stopped here, before anything of it is written.
    platform::FreeSpace space;
    if (!S_ISREG(member.info.st_mode)
        || platform::FreeSpaceForPath(platform::ParentPath(target), &space) != B_OK
        || space.blockSize <= 0)
        return true;
    const off_t blocks = member.info.st_size / space.blockSize + 1;
    if (blocks <= space.freeBlocks)
        return true;
    CopyControl::ReportError(&fControl,
                             MsgBoxAlert("Cannot Copy file.\nInsufficient space on destination."));
    return false;
}

ArchiveExtractor::Outcome ArchiveExtractor::CopyData(ArchiveReader &reader,
                                                     const ArchiveMember &member,
                                                     const std::string &target)
{
    int64_t done = 0;
    for (;;) {
        const void *data = nullptr;
        size_t size = 0;
        int64_t offset = 0;
        const status_t status = reader.ReadBlock(&data, &size, &offset);
        if (status == B_ENTRY_NOT_FOUND)
            return Outcome::Next;
        if (status != B_OK) {
            Refuse(member.path, "the archive is damaged: " + reader.ErrorText());
            return Outcome::End;
        }
        if (archive_write_data_block(fDisk, data, size, offset) < ARCHIVE_WARN) {
            Refuse(member.path,
                   "\"" + target + "\" cannot be written: " + archive_error_string(fDisk));
            return Outcome::End;
        }
        done += int64_t(size);
        Progress(reader, member.path, done);
        if (fStopped)
            return Outcome::End;
    }
}

void ArchiveExtractor::Progress(ArchiveReader &reader, const std::string &member, int64_t done)
{
    const auto overall = int(std::min<int64_t>(reader.BytesRead() / 1024, INT_MAX));
    const auto inFile = int(std::min<int64_t>(done, INT_MAX));
    if (UnZipCallback(overall, inFile, member.c_str(), &fControl) == 0)
        fStopped = true;
}

void ArchiveExtractor::Refuse(const std::string &path, const std::string &why)
{
    // An archive may hold a hundred thousand hostile members: the user is
    // told once, when the run is over, rather than asked to answer each.
    if (fRefusals.size() < kRefusalsNamed)
        fRefusals.push_back("\"" + path + "\": " + why + ".");
    fRefusalCount++;
}

void ArchiveExtractor::ReportRefusals()
{
    if (fRefusalCount == 0)
        return;
    std::string text = "Kestrin did not unpack ";
    if (fRefusalCount == 1) {
        text += fRefusals.front();
    } else {
        text += std::to_string(fRefusalCount) + " members:";
        for (const std::string &refusal : fRefusals)
            text += "\n" + refusal;
        if (fRefusalCount > int64_t(fRefusals.size()))
            text += "\nand " + std::to_string(fRefusalCount - int64_t(fRefusals.size())) + " more.";
    }
    fRefusals.clear();
    fRefusalCount = 0;
    CopyControl::ReportError(&fControl, UnpackAlert(text));
}

} // namespace kestrin
