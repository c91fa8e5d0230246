#include "prefs/OptionsWindow.h"

#include "app/Profile.h"
#include "platform/AlertRecorder.h"
#include "prefs/PrefsMessages.h"
#include "support/MessageRecorder.h"
#include "support/TempHome.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

using kestrin::OptionsWindow;

namespace {

void Click(QWidget &window, const char *name)
{
    auto *button = window.findChild<QAbstractButton *>(name);
    ASSERT_NE(button, nullptr) << name;
    // Near the left edge: a box takes clicks on its indicator and label only.
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

void SetSlider(QWidget &window, const char *name, int value)
{
    window.findChild<QSlider *>(name)->setValue(value);
}

QColor Sample(QWidget &window, const char *name)
{
    return window.findChild<QWidget *>(name)->palette().color(QPalette::Window);
}

std::string ProfileFile(const TempHome &home)
{
    return ReadFileBytes(home.ConfigDir() + "/Kestrin/Kestrin.pref").value_or("<none>");
}

void ChooseDateFormat(QWidget &window, const QString &format)
{
    auto *menu = window.findChild<QMenu *>("Select Date Fomat");
    for (QAction *action : menu->actions()) {
        if (action->text() == format)
            action->trigger();
    }
}

} // namespace

TEST(OptionsWindow, TheControlsShowTheDefaultsAndCancelWritesNothing)
{
    TempHome home;
    platform::AlertRecorder alerts;
    MessageRecorder target;
    OptionsWindow window(QRect(0, 0, 800, 600), &target);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(window.windowTitle(), "Kestrin Preferences Dialog");
    auto *tabs = window.findChild<QTabWidget *>("tab_view");
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(0), "General");
    EXPECT_EQ(tabs->tabText(1), "Appearance");
    EXPECT_EQ(window.findChild<QWidget *>("QueryContainer")->palette().color(QPalette::Window),
              QColor(216, 216, 216));
    const std::pair<const char *, const char *> boxes[]
        = {{"CaseSensitiveSort", "Sort Case Sensitive?"},
           {"ShowProgressBar", "Show Progress Bar?"},
           {"ShowHeader", "Show Header?"},
           {"ShowFooter", "Show Footer?"},
           {"chAlternateColors", "Alternate Backgrounnd Colors?"}};
    for (const auto &[name, label] : boxes) {
        auto *box = window.findChild<QCheckBox *>(name);
        ASSERT_NE(box, nullptr) << name;
        EXPECT_EQ(box->text(), label);
        EXPECT_TRUE(box->isChecked()) << name;
    }
    EXPECT_EQ(window.findChild<QPushButton *>("SaveOptions")->text(), "OK");
    EXPECT_EQ(window.findChild<QPushButton *>("CancelOptions")->text(), "Cancel");
    EXPECT_EQ(window.Options().dateFormat, "%D %R");
    EXPECT_EQ(Sample(window, "BackgroundColor"), QColor(255, 255, 255));
    EXPECT_EQ(Sample(window, "SelectedTextColor"), QColor(255, 0, 0));
    EXPECT_EQ(Sample(window, "SelectionBarColor"), QColor(200, 200, 200));

    Click(window, "Help");
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].text, "Help not implemented for Options Dialog.\nMaybe Someday...");

    Click(window, "ShowHeader");
    ChooseDateFormat(window, "%D %T");
    Click(window, "CancelOptions");
    EXPECT_FALSE(window.isVisible());
    QTest::qWait(0);
    EXPECT_EQ(ProfileFile(home), "<none>");
    EXPECT_TRUE(target.messages.empty());
}

TEST(OptionsWindow, OKWritesEveryKeyInItsOrderAndTellsTheMainWindow)
{
    TempHome home;
    MessageRecorder target;
    OptionsWindow window(QRect(), &target);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    ChooseDateFormat(window, "%a %b %d %x %Y");
    Click(window, "CaseSensitiveSort");
    Click(window, "ShowFooter");
    window.findChild<QTabWidget *>("tab_view")->setCurrentIndex(1);
    // The text colour, then back to the background: the control shows the
    // background again, and both colours are kept.
    Click(window, "brbText");
    SetSlider(window, "Red", 10);
    SetSlider(window, "Green", 20);
    SetSlider(window, "Blue", 30);
    EXPECT_EQ(Sample(window, "TextColor"), QColor(10, 20, 30));
    Click(window, "brbBackground");
    EXPECT_EQ(window.findChild<QSlider *>("Red")->value(), 255);
    SetSlider(window, "Green", 240);
    Click(window, "SaveOptions");

    EXPECT_EQ(ProfileFile(home),
              "DateFormat=%a %b %d %x %Y\n"
              "bCaseSensitiveSort=0\nShowProgressBar=1\nShowHeader=1\nShowFooter=0\n"
              "bgRed=255\nbgBlue=255\nbgGreen=240\nbgAlpha=255\n"
              "bAlternateColors=1\n"
              "txtRed=10\ntxtBlue=30\ntxtGreen=20\ntxtAlpha=255\n"
              "seltxtRed=255\nseltxtBlue=0\nseltxtGreen=0\nseltxtAlpha=0\n"
              "sbRed=200\nsbBlue=200\nsbGreen=200\nsbAlpha=200\n");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !target.messages.empty(); }, 10000));
    EXPECT_EQ(target.messages[0].what, kestrin::kMsgPreferencesChanged);
    EXPECT_TRUE(window.isVisible()) << "OK leaves the window open";

    OptionsWindow again(QRect(), &target);
    EXPECT_FALSE(again.findChild<QCheckBox *>("ShowFooter")->isChecked());
    EXPECT_EQ(again.Options().dateFormat, "%a %b %d %x %Y");
    EXPECT_EQ(Sample(again, "TextColor"), QColor(10, 20, 30));
}

// "DateFormat=" says the dates are empty; only a key that is not there at
// all takes the default. OK writes the empty value back over its own line.
TEST(OptionsWindow, AKeyGivenEmptyIsKeptEmptyAndOKLeavesTheNextLineAlone)
{
    TempHome home;
    MessageRecorder target;
    const std::string written = "DateFormat=\nbCaseSensitiveSort=0\nShowProgressBar=1\n";
    kestrin::CreatePrefFile("Kestrin", "Kestrin.pref");
    WriteFileBytes(home.ConfigDir() + "/Kestrin/Kestrin.pref", written);
    OptionsWindow window(QRect(), &target);
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(window.Options().dateFormat, "");
    EXPECT_FALSE(window.findChild<QCheckBox *>("CaseSensitiveSort")->isChecked());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    const std::string saved = ProfileFile(home);
    EXPECT_EQ(saved.substr(0, written.size()), written);
}
