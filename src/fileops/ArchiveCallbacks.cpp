#include "fileops/ArchiveCallbacks.h"

#include "fileops/CopyControl.h"

#include <cstring>

namespace kestrin {

namespace {

constexpr int kGoOn = 1;
constexpr int kStop = 0;

int Report(int overall, int fileProgress, const char *name, CopyControl *control)
{
    if (overall == -1 || !control)
        return kGoOn;
    if (!name)
        name = "";
    // Packing names its members by their paths, unpacking may not; a bare
    // name is shown whole rather than read past.
    const char *slash = std::strrchr(name, '/');
    control->ArchiveProgress(overall, fileProgress, slash ? slash + 1 : name, name);
    return control->StopRequested() ? kStop : kGoOn;
}

} // namespace

int ZipCallback(int overall, int fileProgress, const char *name, CopyControl *control)
{
    return Report(overall, fileProgress, name, control);
}

int UnZipCallback(int overall, int fileProgress, const char *name, CopyControl *control)
{
    return Report(overall, fileProgress, name, control);
}

} // namespace kestrin
