#pragma once

#include "platform/Alert.h"
#include "platform/Message.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrin {

// What the copy engine runs for one request of the panes: one step for a
// pairing with a direct route, several through a private work folder for
// the others (an archive's members on their way to a server), or the
// refusal the user sees instead.
struct TransferPlan
{
    // A sub-folder of the plan's work folder that one step fills and a later
    // one takes its entries from.
    enum class Stage { None, Fetched, Packed };

    struct Step
    {
        // A request the engine knows (copy, upload, download, pack, unpack).
        platform::Message request{0};
        // Where the step writes; ignored when it writes into a stage.
        std::string destination;
        Stage into = Stage::None;
        // The step's "refs" are the entries of this stage, found when it starts.
        Stage takes = Stage::None;
    };

    std::string title;
    // What the progress window names as the target.
    std::string destination;
    std::vector<Step> steps;
    std::optional<platform::Alert> refusal;

    bool Refused() const { return refusal.has_value(); }
    bool UsesWorkFolder() const
    {
        for (const Step &step : steps) {
            if (step.into != Stage::None || step.takes != Stage::None)
                return true;
        }
        return false;
    }
};

} // namespace kestrin
