#include "fileops/ArchiveCallbacks.h"

#include "fileops/CopyWin.h"
#include "widgets/StatusBar.h"

#include <cstring>

namespace kestrin {

namespace {

constexpr int kGoOn = 1;

int Report(int overall, int fileProgress, const char *name, const char *leaf, CopyWin *window)
{
    if (window)
        window->repaint();
    if (overall == -1 || !window)
        return kGoOn;
    StatusBar *fileBar = window->FileBar();
    StatusBar *mainBar = window->MainBar();
    fileBar->Update(float(fileProgress - int(fileBar->CurrentValue())));
    mainBar->Update(float(overall - int(mainBar->CurrentValue())));
    fileBar->SetText(QString::fromUtf8(leaf));
    window->SetToText(QString::fromUtf8(name));
    return kGoOn;
}

} // namespace

int ZipCallback(int overall, int fileProgress, const char *name, CopyWin *window)
{
    if (!name)
        name = "";
    // Packing names its members by their paths; a bare name is shown whole
    // rather than read past.
    const char *slash = std::strrchr(name, '/');
    return Report(overall, fileProgress, name, slash ? slash + 1 : name, window);
}

int UnZipCallback(int overall, int fileProgress, const char *name, CopyWin *window)
{
    if (!name)
        name = "";
    const char *slash = std::strrchr(name, '/');
    return Report(overall, fileProgress, name, slash ? slash + 1 : name, window);
}

} // namespace kestrin
