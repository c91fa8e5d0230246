#pragma once

#include "fileops/TransferPlan.h"

#include <string>

namespace kestrin {

class CopyControl;

// Runs a transfer plan's steps in order through the copy engine, all
// reporting to one `control`, so one progress window with one Pause and one
// Stop serves the whole plan. A plan that goes through a work folder gets a
// private one of its own, which is removed at the end whatever happened: a
// stop or a failure in any step leaves nothing of it behind.
//
// Run() works synchronously on the calling thread, as CopyEngine does.
class TransferRun
{
public:
    TransferRun(TransferPlan plan, CopyControl &control);
    ~TransferRun();

    TransferRun(const TransferRun &) = delete;
    TransferRun &operator=(const TransferRun &) = delete;

    void Run();

    // The work folder while the plan runs; empty before and after.
    const std::string &WorkFolder() const { return fWorkFolder; }

private:
    bool MakeWorkFolder();
    void RemoveWorkFolder();
    std::string StageFolder(TransferPlan::Stage stage) const;
    // False when a step that takes a stage's entries finds none.
    bool AddStagedRefs(TransferPlan::Stage stage, platform::Message &request) const;
    void RunStep(const TransferPlan::Step &step);

    const TransferPlan fPlan;
    CopyControl &fControl;
    std::string fWorkFolder;
};

} // namespace kestrin
