#include "fileops/TransferRun.h"

#include "fileops/CopyControl.h"
#include "fileops/CopyEngine.h"
#include "fileops/KestrinEntry.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"
#include "platform/Paths.h"

#include <algorithm>
#include <utility>

namespace kestrin {

TransferRun::TransferRun(TransferPlan plan, CopyControl &control)
    : fPlan(std::move(plan))
    , fControl(control)
{}

TransferRun::~TransferRun()
{
    // Also when a step ended by an exception: the work folder never stays.
    RemoveWorkFolder();
}

void TransferRun::Run()
{
    if (fPlan.UsesWorkFolder() && !MakeWorkFolder())
        return;
    for (const TransferPlan::Step &step : fPlan.steps) {
        if (fControl.StopRequested())
            break;
        RunStep(step);
    }
    RemoveWorkFolder();
}

bool TransferRun::MakeWorkFolder()
{
    std::string base;
    if (platform::FindDirectory(platform::DirectoryWhich::Transfers, &base, true) == B_OK
        && platform::Directory::CreatePrivate(platform::JoinPath(base, "work-XXXXXX"), &fWorkFolder)
               == B_OK)
        return true;
    fWorkFolder.clear();
    CopyControl::ReportError(&fControl,
                             {fPlan.title,
                              "Kestrin cannot make a work folder for this transfer in \"" + base
                                  + "\", so nothing was transferred.",
                              {"OK"},
                              B_STOP_ALERT});
    return false;
}

void TransferRun::RemoveWorkFolder()
{
    if (fWorkFolder.empty())
        return;
    KestrinEntry(fWorkFolder).DeleteEntry();
    fWorkFolder.clear();
}

std::string TransferRun::StageFolder(TransferPlan::Stage stage) const
{
    return platform::JoinPath(fWorkFolder,
                              stage == TransferPlan::Stage::Packed ? "packed" : "fetched");
}

bool TransferRun::AddStagedRefs(TransferPlan::Stage stage, platform::Message &request) const
{
    const std::string folder = StageFolder(stage);
    platform::FolderScan scan(folder);
    if (scan.InitCheck() != B_OK || scan.ReadNames() <= 0)
        return false;
    std::vector<std::string> names = scan.Names();
    std::sort(names.begin(), names.end());
    for (const std::string &name : names) {
        entry_ref ref;
        if (platform::Entry(platform::JoinPath(folder, name)).GetRef(&ref) == B_OK)
            request.AddRef("refs", ref);
    }
    return true;
}

void TransferRun::RunStep(const TransferPlan::Step &step)
{
    platform::Message request = step.request;
    if (step.takes != TransferPlan::Stage::None && !AddStagedRefs(step.takes, request))
        return; // the step before brought nothing
    std::string destination = step.destination;
    if (step.into != TransferPlan::Stage::None) {
        destination = StageFolder(step.into);
        platform::Directory work(fWorkFolder);
        if (work.CreateDirectory(destination) != B_OK)
            return;
    }
    CopyEngine(std::move(request), destination, fControl).Run();
}

} // namespace kestrin
