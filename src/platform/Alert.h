#pragma once

#include <string>
#include <vector>

enum alert_type { B_EMPTY_ALERT, B_INFO_ALERT, B_IDEA_ALERT, B_WARNING_ALERT, B_STOP_ALERT };

enum button_width { B_WIDTH_AS_USUAL, B_WIDTH_FROM_WIDEST, B_WIDTH_FROM_LABEL };

namespace platform {

// One alert as the user is meant to see it: what a test recorder keeps, and
// what the real alert shows.
struct Alert
{
    std::string title;
    std::string text;
    std::vector<std::string> buttons; // one to three, left to right
    alert_type type = B_INFO_ALERT;
    button_width width = B_WIDTH_AS_USUAL;

    bool operator==(const Alert &other) const = default;
};

} // namespace platform
