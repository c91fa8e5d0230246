#include "panes/FileIcons.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using kestrin::FileIcons;

TEST(FileIcons, WithoutANamedThemeFilesGetTheIconsOfTheirTypes)
{
    // A plain window manager names no icon theme.
    QIcon::setThemeName("");
    FileIcons::ChooseTheme();
    EXPECT_EQ(QIcon::themeName(), FileIcons::kFallbackTheme);

    // Types the theme has no icon of their own for get their generic one.
    const QIcon &text = FileIcons::ForEntry("notes.txt", S_IFREG | 0644, false);
    const QIcon &image = FileIcons::ForEntry("photo.png", S_IFREG | 0644, false);
    const QIcon &folder = FileIcons::ForEntry("sub", S_IFDIR | 0755, false);
    EXPECT_EQ(text.name(), "text-x-generic");
    EXPECT_EQ(image.name(), "image-x-generic");
    EXPECT_FALSE(folder.isNull());
    EXPECT_NE(text.name(), image.name());
}
