#pragma once

#include "platform/Alert.h"

#include <cstdint>
#include <functional>
#include <string>

namespace kestrin {

// The four lines of the overwrite question, without their "Overwrite: " and
// "With file: " prefixes, in the order the question shows them.
struct OverwriteQuestion
{
    std::string overwriteLine;
    std::string withFileLine;
    std::string thirdLine;
    std::string fourthLine;

    bool operator==(const OverwriteQuestion &other) const = default;
};

// Everything the copy engine tells its progress window or asks of the user.
// The engine calls these on its worker thread; an implementation never
// touches a widget from them (the window keeps counters that its timer reads,
// and hands questions to the GUI thread). A test implements it directly.
class CopyControl
{
public:
    virtual ~CopyControl() = default;

    // The overall bar, once per request: its maximum (a 32-bit total, which
    // wraps past 2 GiB), its text and its trailing text.
    virtual void BatchStarted(int32_t total,
                              const std::string &text,
                              const std::string &trailingText)
        = 0;
    // A new file: the file bar is reset to `size` and the two value lines show
    // the paths.
    virtual void FileStarted(const std::string &source, const std::string &target, double size) = 0;
    // A chunk of `bytes` is copied: both bars advance by it; the file bar's text
    // becomes `leafName` and its trailing text `fileTotal`, the bytes of this file so far.
    virtual void ChunkCopied(int64_t bytes, const std::string &leafName, int64_t fileTotal) = 0;
    // An FTP transfer's progress, which counts each file as 100: both bars
    // advance by `percentDelta`; the file bar's text becomes `leafName` and
    // its trailing text `fileTrailing`; the overall bar's trailing text
    // becomes `mainTrailing`.
    virtual void TransferProgress(int32_t percentDelta,
                                  const std::string &leafName,
                                  const std::string &fileTrailing,
                                  const std::string &mainTrailing)
        = 0;
    // The progress window hides around overwrite questions.
    virtual void SetProgressVisible(bool visible) = 0;
    // True once the user pressed Stop. While the user has paused the copy,
    // this waits (on a condition, not a spin) until resumed or stopped.
    virtual bool StopRequested() = 0;
    // Work that can wait on something outside the machine (a server) hands
    // in how to cut that wait short, and null when it is over. A window calls
    // it when a stop is not taken up soon; under the control's own lock, so
    // it never runs after it was taken back.
    virtual void SetStopAction(std::function<void()> action) { (void) action; }
    // Shows the question and waits for the answer: one of kOverwrite .. kCancelBatch.
    virtual int32_t AskOverwrite(const OverwriteQuestion &question) = 0;
    // An alert about the work (a file that cannot be copied, a link that
    // cannot be made): shown to the user while the worker waits. Answers the
    // index of the pressed button.
    virtual int32_t FileError(const platform::Alert &alert) = 0;
    // An archive routine's progress: the bars move to `overall` and
    // `fileProgress` (back as well as forward), the file bar's text becomes
    // `leafName` and the "To" line shows `memberName`.
    virtual void ArchiveProgress(int32_t overall,
                                 int32_t fileProgress,
                                 const std::string &leafName,
                                 const std::string &memberName)
        = 0;

    // How the engine reports every error: through `control`, or, for work
    // that no window watches (a null control), as an alert of its own.
    static int32_t ReportError(CopyControl *control, const platform::Alert &alert);
};

} // namespace kestrin
