#pragma once

#include "widgets/RgbColor.h"

#include <string>

namespace kestrin {

// The colours a row is drawn with.
struct RowColors
{
    rgb_color background{255, 255, 255, 255};
    rgb_color text{0, 0, 0, 0};
    rgb_color selectedText{255, 0, 0, 0};
    rgb_color selectionBar{200, 200, 200, 200};
};

// What the panes take from the settings profile, read once when a pane or
// list is made. Missing keys keep their defaults; so does each missing colour
// component on its own.
struct PaneSettings
{
    std::string dateFormat = "%D %R";
    bool showProgress = true;
    bool caseSensitiveSort = true;
    bool alternateColors = true;
    bool showHeader = true;
    bool showFooter = true;
    RowColors colors;

    static PaneSettings Load();

    // One colour from the keys <prefix>Red, <prefix>Green, <prefix>Blue and
    // <prefix>Alpha.
    static rgb_color ReadColor(const char *prefix, rgb_color fallback);
    // "1" is on, anything else that is there is off.
    static bool ReadFlag(const char *key, bool fallback);
};

} // namespace kestrin
