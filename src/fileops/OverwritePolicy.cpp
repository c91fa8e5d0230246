#include "fileops/OverwritePolicy.h"

#include "fileops/KestrinEntry.h"
#include "platform/Entry.h"

namespace kestrin {

namespace {

// A missing time reads as the epoch, so a vanished target never counts as newer.
time_t ModificationTime(const platform::Entry &entry)
{
    time_t modified = 0;
    entry.GetModificationTime(&modified);
    return modified;
}

double Size(const platform::Entry &entry)
{
    off_t size = 0;
    entry.GetSize(&size);
    return double(size);
}

std::string PathOf(const platform::Entry &entry)
{
    std::string path;
    entry.GetPath(&path);
    return path;
}

} // namespace

OverwritePolicy::OverwritePolicy(CopyControl &control)
    : fControl(control)
{}

int32_t OverwritePolicy::Ask(const OverwriteQuestion &question)
{
    // Nothing stands while a question is open.
    fDecision = kNoDecision;
    fDecision = fControl.AskOverwrite(question);
    return fDecision;
}

bool OverwritePolicy::ReplaceOnCopy(KestrinEntry &source, const std::string &targetPath)
{
    return Replace(ModificationTime(source), ModificationTime(platform::Entry(targetPath)), [&] {
        std::string sourcePath;
        source.GetPath(&sourcePath);
        source.Overwrite(sourcePath, targetPath, *this);
    });
}

bool OverwritePolicy::ReplaceWith(const std::string &sourceName,
                                  double size,
                                  time_t modified,
                                  const std::string &targetPath)
{
    const platform::Entry target(targetPath);
    return Replace(modified, ModificationTime(target), [&] {
        Ask({sourceName,
             targetPath,
             Describe(Size(target), ModificationTime(target)),
             Describe(size, modified)});
    });
}

bool OverwritePolicy::ReplaceRemote(const std::string &sourceName,
                                    double size,
                                    time_t modified,
                                    const std::string &targetPath,
                                    double targetSize,
                                    time_t targetModified)
{
    return Replace(modified, targetModified, [&] {
        Ask({sourceName, targetPath, Describe(targetSize, targetModified), Describe(size, modified)});
    });
}

bool OverwritePolicy::Replace(time_t sourceModified,
                              time_t targetModified,
                              const std::function<void()> &ask)
{
    if (fDecision == kSkipAll)
        return false;

    fControl.SetProgressVisible(false);
    if (fDecision == kOverwriteAllOlder)
        return sourceModified > targetModified;
    if (fDecision == kOverwriteAll)
        return true;

    ask();
    // Overwrite All Older replaces this target whatever its age; the age
    // test only applies from the next conflict on.
    return fDecision == kOverwrite || fDecision == kOverwriteAll || fDecision == kOverwriteAllOlder;
}

bool OverwritePolicy::ReplaceOnMove(const platform::Entry &target, const platform::Entry &source)
{
    if (fDecision == kNoDecision || fDecision == kOverwrite || fDecision == kSkip) {
        fControl.SetProgressVisible(false);
        AskMove(target, source);
        fControl.SetProgressVisible(true);
    }
    switch (fDecision) {
    case kOverwrite:
    case kOverwriteAll:
        return true;
    case kOverwriteAllOlder:
        return ModificationTime(source) > ModificationTime(target);
    default:
        return false;
    }
}

void OverwritePolicy::AskMove(const platform::Entry &target, const platform::Entry &source)
{
    Ask({PathOf(target),
         PathOf(source),
         Describe(Size(source), ModificationTime(source)),
         Describe(Size(target), ModificationTime(target))});
}

std::string OverwritePolicy::Describe(double size, time_t modified)
{
    std::string text = size <= 1024.0 ? std::to_string(int64_t(size)) + " Bytes"
                                      : std::to_string(int64_t(size) / 1024) + " K";
    // ctime_r honours TZ only once tzset has read it.
    tzset();
    char when[64] = {};
    if (ctime_r(&modified, when)) {
        std::string date = when;
        if (!date.empty())
            date.pop_back(); // ctime's newline
        text += "  " + date;
    }
    return text;
}

} // namespace kestrin
