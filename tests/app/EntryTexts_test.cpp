#include "app/EntryTexts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using kestrin::EntryTexts;

TEST(EntryTexts, PermissionTextsKeepOnlyTheNineBits)
{
    EXPECT_EQ(EntryTexts::PermissionText(0754), "rwxr-xr--");
    EXPECT_EQ(EntryTexts::PermissionText(S_IFDIR | 04751), "rwxr-x--x");
    EXPECT_EQ(EntryTexts::PermissionText(0), "---------");
}
