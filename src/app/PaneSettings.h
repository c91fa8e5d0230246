#pragma once

#include "platform/RgbColor.h"

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

// The display preferences of the settings profile: what the panes take from
// it when they are made and when the preferences change, and what the
// preferences window edits. Missing keys keep their defaults; so does each
// missing colour component on its own.
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
    // Writes every key, in the order the preferences have always been
    // written: the date format, the four flags, the background colour, the
    // alternate-colours flag, then the text, selected-text and selection-bar
    // colours; each colour red, blue, green, alpha.
    void Save() const;

    // One colour from the keys <prefix>Red, <prefix>Green, <prefix>Blue and
    // <prefix>Alpha.
    static rgb_color ReadColor(const char *prefix, rgb_color fallback);
    // "1" is on, anything else that is there is off.
    static bool ReadFlag(const char *key, bool fallback);
};

} // namespace kestrin
