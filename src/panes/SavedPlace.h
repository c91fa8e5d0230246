#pragma once

#include "panes/PaneSource.h"

#include <memory>
#include <string>

namespace kestrin {

// The place a pane shows again from the text the profile kept for it
// (PaneSource::SavedPlace). Each kind of place that keeps something other
// than a folder's path is asked in turn whether the text is one of its own;
// whatever none of them reads is a folder's path.
class SavedPlace
{
public:
    // `standing` is the local folder that a place away from the disk keeps
    // for the pane to come back to.
    static std::unique_ptr<PaneSource> Read(const std::string &saved, const std::string &standing);
};

} // namespace kestrin
