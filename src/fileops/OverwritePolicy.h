#pragma once

#include "fileops/CopyControl.h"
#include "fileops/FileOpsMessages.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>

namespace platform {
class Entry;
}

namespace kestrin {

class KestrinEntry;

// The user's answers to "Item Exists" over one request. The last answer
// stands for the rest of the batch: the "All" answers are never asked again,
// the single ones are asked anew at the next conflict. One object per
// request, used on the engine's worker thread only.
class OverwritePolicy
{
public:
    explicit OverwritePolicy(CopyControl &control);

    OverwritePolicy(const OverwritePolicy &) = delete;
    OverwritePolicy &operator=(const OverwritePolicy &) = delete;

    CopyControl &Control() const { return fControl; }

    // kNoDecision until the first answer, then kOverwrite .. kCancelBatch.
    int32_t Decision() const { return fDecision; }
    // The last answer was Cancel: the batch ends after the current top-level
    // item. A later question inside that item (a folder's next existing
    // target) can still be answered otherwise, and the batch then goes on.
    bool Cancelled() const { return fDecision == kCancelBatch; }

    // Shows the question and keeps the answer as the decision.
    int32_t Ask(const OverwriteQuestion &question);

    // A file copy meets an existing target: true to replace it. Hides the
    // progress window unless Skip All stands; showing it again is up to the
    // caller, once the target has been reopened for writing.
    bool ReplaceOnCopy(KestrinEntry &source, const std::string &targetPath);
    // The same for a source that is no local entry (an archive's member),
    // named `sourceName`, of `size` bytes, modified at `modified`.
    bool ReplaceWith(const std::string &sourceName,
                     double size,
                     time_t modified,
                     const std::string &targetPath);

    // The same for a target that is no local entry (a file on a server), of
    // `targetSize` bytes, modified at `targetModified`.
    bool ReplaceRemote(const std::string &sourceName,
                       double size,
                       time_t modified,
                       const std::string &targetPath,
                       double targetSize,
                       time_t targetModified);

    // A rename within one volume meets an existing target: true to replace it.
    // The progress window hides only while the question is shown.
    bool ReplaceOnMove(const platform::Entry &target, const platform::Entry &source);

    // One description line of the question: "512 Bytes  Mon Jan 10 12:00:00 2000",
    // "2048 K  ..." past 1024 bytes.
    static std::string Describe(double size, time_t modified);

private:
    // What both kinds of copy decide: the standing answer, or `ask`.
    bool Replace(time_t sourceModified, time_t targetModified, const std::function<void()> &ask);
    // The move's question: the target first, then the source.
    void AskMove(const platform::Entry &target, const platform::Entry &source);

    CopyControl &fControl;
    int32_t fDecision = kNoDecision;
};

} // namespace kestrin
