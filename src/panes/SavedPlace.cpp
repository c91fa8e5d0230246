#include "panes/SavedPlace.h"

#include "panes/FolderSource.h"
#include "panes/FtpSource.h"

namespace kestrin {

std::unique_ptr<PaneSource> SavedPlace::Read(const std::string &saved, const std::string &standing)
{
    // A server's folder is kept as its session's name.
    if (std::unique_ptr<PaneSource> server = FtpSource::FromSaved(saved, standing))
        return server;
    return std::make_unique<FolderSource>(saved);
}

} // namespace kestrin
