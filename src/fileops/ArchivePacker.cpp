#include "fileops/ArchivePacker.h"

#include "fileops/ArchiveCallbacks.h"
#include "fileops/CopyControl.h"
#include "fileops/KestrinEntry.h"
#include "fileops/OverwritePolicy.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/PathNames.h"
#include "platform/ZipPack.h"

#include <algorithm>
#include <climits>
#include <ctime>

namespace kestrin {

namespace {

platform::Alert PackAlert(const std::string &text)
{
    return {"Packing", text, {"OK"}, B_WARNING_ALERT};
}

// What the shared packing routine reports, turned into the window's progress
// and alerts.
struct PackHooks
{
    CopyControl &control;
    std::string archive;
    std::string failure;

    static int Progress(void *data, const char *member, long long memberBytes, long long allBytes)
    {
        auto *hooks = static_cast<PackHooks *>(data);
        return ZipCallback(int(std::min<long long>(allBytes / 1024, INT_MAX)),
                           int(std::min<long long>(memberBytes, INT_MAX)),
                           member,
                           &hooks->control);
    }

    static void Report(void *data, int fatal, const char *text)
    {
        auto *hooks = static_cast<PackHooks *>(data);
        if (fatal)
            hooks->failure = text;
        else
            CopyControl::ReportError(&hooks->control,
                                     PackAlert("\"" + hooks->archive + "\": " + text + "."));
    }
};

} // namespace

ArchivePacker::ArchivePacker(const platform::Message &request,
                             std::string destination,
                             CopyControl &control)
    : fDestination(std::move(destination))
    , fControl(control)
{
    entry_ref ref;
    for (int32_t i = 0; request.FindRef("refs", i, &ref) == B_OK; i++) {
        fPaths.push_back(ref.path);
        fNames.push_back(platform::LeafName(ref.path));
    }
    if (request.FindString("From", &fSourceFolder) != B_OK && !fPaths.empty())
        fSourceFolder = platform::ParentPath(fPaths.front());
}

std::string ArchivePacker::ArchiveName(const std::vector<std::string> &paths,
                                       const std::string &sourceFolder)
{
    std::string name = paths.size() == 1 ? platform::LeafName(paths.front())
                                         : platform::LeafName(sourceFolder);
    if (name.empty())
        name = "Archive";
    return name + ".zip";
}

void ArchivePacker::Run()
{
    if (fPaths.empty())
        return;
    int64_t total = 0;
    for (const std::string &path : fPaths)
        total += int64_t(KestrinEntry(path).CopySize());
    fTotalKiB = int32_t(std::min<int64_t>(total / 1024, INT32_MAX));
    fControl.BatchStarted(fTotalKiB,
                          "Packing " + std::to_string(fPaths.size()) + " files or directories",
                          std::to_string(fTotalKiB) + " K");
    const std::string target = platform::JoinPath(fDestination, ArchiveName(fPaths, fSourceFolder));
    if (MayReplace(target, double(total)))
        PackInto(target);
}

bool ArchivePacker::MayReplace(const std::string &target, double size)
{
    struct stat existing;
    if (platform::Entry(target).GetStat(&existing) != B_OK)
        return true;
    OverwritePolicy overwrite(fControl);
    const std::string source = fPaths.size() == 1 ? fPaths.front() : fSourceFolder;
    if (!overwrite.ReplaceWith(source, size, time(nullptr), target))
        return false;
    fControl.SetProgressVisible(true);
    return true;
}

void ArchivePacker::PackInto(const std::string &target)
{
    std::string name;
    const std::string folder = platform::ParentPath(target, &name);
    platform::File file;
    std::string temporary;
    if (file.SetToTemporary(platform::JoinPath(folder, "." + name + ".XXXXXX"), &temporary)
        != B_OK) {
        CopyControl::ReportError(&fControl,
                                 PackAlert("Kestrin cannot write into \"" + folder + "\"."));
        return;
    }
    std::vector<const char *> paths, names;
    for (size_t i = 0; i < fPaths.size(); i++) {
        paths.push_back(fPaths[i].c_str());
        names.push_back(fNames[i].c_str());
    }
    PackHooks hooks{fControl, target, {}};
    const kestrin_zip_hooks callbacks{&PackHooks::Progress, &PackHooks::Report, &hooks};
    const int result = kestrin_zip_pack(file.FD(),
                                        paths.data(),
                                        names.data(),
                                        paths.size(),
                                        &callbacks);
    file.SetPermissions(0644);
    file.Unset();
    platform::Entry packed(temporary);
    if (result == KESTRIN_ZIP_DONE && packed.MoveTo("", name.c_str(), true) == B_OK)
        return;
    packed.Remove();
    if (result == KESTRIN_ZIP_FAILED)
        CopyControl::ReportError(&fControl,
                                 PackAlert("Kestrin could not pack \"" + target
                                           + "\": " + hooks.failure + "."));
}

} // namespace kestrin
