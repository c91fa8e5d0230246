// Comparing the two panes by keys: the marks and footers of both sides, by
// size and time and by content, and what cannot be compared.

#include "MainWindowTestSupport.h"

#include "panes/KsFtr.h"
#include "support/TestArchives.h"

#include <utime.h>

namespace {

constexpr time_t kTime = 1000000000; // what the test archives give members

class CompareFoldersTest : public KestrinFixture
{
protected:
    std::string Side(int pane) const { return fHome.Root() + (pane == 0 ? "/left" : "/right"); }

    void Make(int pane, const std::string &name, const std::string &data, time_t modified = kTime)
    {
        const std::string path = Side(pane) + "/" + name;
        fs::create_directories(Side(pane));
        WriteFileBytes(path, data);
        const utimbuf times{modified, modified};
        ASSERT_EQ(utime(path.c_str(), &times), 0);
    }

    void Press(Qt::KeyboardModifiers keys)
    {
        // The offscreen platform has no window manager to give the main
        // window back its activation once a window of ours has closed.
        QApplication::setActiveWindow(fKestrin->Window());
        List(0)->setFocus();
        QTest::keyClick(List(0), Qt::Key_K, keys);
    }
};

TEST_F(CompareFoldersTest, BySizeAndTimeByContentAndInAnArchive)
{
    const std::string block(3000, 'b');
    for (int pane : {0, 1}) {
        Make(pane, "same", block);
        Make(pane, "newer", block, kTime + 60 * (1 - pane));
        Make(pane, "bigger", block + (pane == 0 ? "b" : ""));
        Make(pane, "bytes", pane == 0 ? block : std::string(2999, 'b') + "c");
        Make(pane, pane == 0 ? "onlyleft" : "onlyright", block);
        fs::create_directories(Side(pane) + "/both");
    }
    fs::create_directories(Side(0) + "/folderleft");
    WriteTestArchive(Side(0) + "/bundle.zip", "zip", {{"same", block}, {"extra", "x"}});
    PanesOn({Side(0), Side(1)});
    Start();
    List(0)->Marked().Mark(1, List(0)->CountItems() - 1);

    Press(Qt::ControlModifier);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"bigger", "bundle.zip", "folderleft", "newer", "onlyleft"}));
    EXPECT_EQ(Marked(1), (std::set<std::string>{"bigger", "newer", "onlyright"}));
    EXPECT_EQ(fKestrin->Window()->Panes().at(1)->Footer()->Text(), "8 of 14k in 3 of 5 files selected");

    // By content the times do not count; the bytes are read behind a window.
    Press(Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(WaitFor([&] { return Marked(0).count("bytes") > 0; }));
    EXPECT_EQ(Marked(0), (std::set<std::string>{"bigger", "bundle.zip", "bytes", "folderleft", "onlyleft"}));
    EXPECT_EQ(Marked(1), (std::set<std::string>{"bigger", "bytes", "onlyright"}));
    EXPECT_EQ(fAlerts.Count(), 0u);

    // An archive's members compare by size and time, not by content.
    SelectIn(0, "bundle.zip");
    QTest::keyClick(List(0), Qt::Key_Return);
    ASSERT_TRUE(WaitFor([&] { return !List(0)->IsListing() && List(0)->FindItem("extra") > 0; }));
    Press(Qt::ControlModifier);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"extra"}));
    Press(Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("by content only in folders on this computer"),
              std::string::npos);
    EXPECT_EQ(Marked(0), (std::set<std::string>{"extra"})) << "left as they were";
}

} // namespace
