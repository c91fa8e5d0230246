#include "app/PaneSettings.h"

#include "app/AppInfo.h"
#include "app/NumberText.h"
#include "app/Profile.h"

#include <utility>

namespace kestrin {

namespace {

bool Read(const std::string &key, std::string *value)
{
    return GetProfileString(kSettingsFolder, key, value, kSettingsFile);
}

void ReadComponent(const std::string &key, uint8_t *component)
{
    std::string value;
    if (Read(key, &value))
        *component = uint8_t(kestrin::atoi(value.c_str()));
}

void Write(const std::string &key, const std::string &value)
{
    SetProfileString(kSettingsFolder, key, value, kSettingsFile);
}

void WriteFlag(const char *key, bool on)
{
    Write(key, on ? "1" : "0");
}

void WriteColor(const std::string &prefix, const rgb_color &color)
{
    for (const auto &[component, value] : {std::pair{"Red", color.red},
                                           std::pair{"Blue", color.blue},
                                           std::pair{"Green", color.green},
                                           std::pair{"Alpha", color.alpha}}) {
        char text[24];
        kestrin::itoa(value, text);
        Write(prefix + component, text);
    }
}

} // namespace

rgb_color PaneSettings::ReadColor(const char *prefix, rgb_color fallback)
{
    rgb_color color = fallback;
    const std::string base = prefix;
    ReadComponent(base + "Red", &color.red);
    ReadComponent(base + "Green", &color.green);
    ReadComponent(base + "Blue", &color.blue);
    ReadComponent(base + "Alpha", &color.alpha);
    return color;
}

bool PaneSettings::ReadFlag(const char *key, bool fallback)
{
    return GetProfileFlag(kSettingsFolder, key, fallback, kSettingsFile);
}

PaneSettings PaneSettings::Load()
{
    PaneSettings settings;
    // A key that is there with nothing after its "=" is an empty format,
    // not a missing one: only a missing key takes the default.
    Read("DateFormat", &settings.dateFormat);
    settings.showProgress = ReadFlag("ShowProgressBar", true);
    settings.caseSensitiveSort = ReadFlag("bCaseSensitiveSort", true);
    settings.alternateColors = ReadFlag("bAlternateColors", true);
    settings.showHeader = ReadFlag("ShowHeader", true);
    settings.showFooter = ReadFlag("ShowFooter", true);
    const RowColors defaults;
    settings.colors.background = ReadColor("bg", defaults.background);
    settings.colors.text = ReadColor("txt", defaults.text);
    settings.colors.selectedText = ReadColor("seltxt", defaults.selectedText);
    settings.colors.selectionBar = ReadColor("sb", defaults.selectionBar);
    return settings;
}

void PaneSettings::Save() const
{
    Write("DateFormat", dateFormat);
    WriteFlag("bCaseSensitiveSort", caseSensitiveSort);
    WriteFlag("ShowProgressBar", showProgress);
    WriteFlag("ShowHeader", showHeader);
    WriteFlag("ShowFooter", showFooter);
    WriteColor("bg", colors.background);
    WriteFlag("bAlternateColors", alternateColors);
    WriteColor("txt", colors.text);
    WriteColor("seltxt", colors.selectedText);
    WriteColor("sb", colors.selectionBar);
}

} // namespace kestrin
