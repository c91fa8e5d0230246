#include "MessageRecorder.h"
#include "TempHome.h"
#include "platform/AlertRecorder.h"
#include "query/QueryMessages.h"
#include "query/QueryWindow.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using kestrin::QueryWindow;

namespace {

class QueryWindowTest : public ::testing::Test
{
protected:
    QueryWindowTest()
    {
        window = std::make_unique<QueryWindow>(QRect(0, 0, 800, 600), &recipient);
        root = home.Root() + "/tree";
        fs::create_directories(root + "/sub");
        WriteFileBytes(root + "/sub/foobar", std::string(3000, 'x'));
        WriteFileBytes(root + "/foo", "small");
        WriteFileBytes(root + "/barfoo", std::string(3000, 'x'));
        window->SetRoots({root});
    }

    template<typename T>
    T *Find(const char *name) const
    {
        T *found = window->findChild<T *>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    void Click(const char *name)
    {
        QAbstractButton *button = Find<QAbstractButton>(name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    // Chooses an item the way a click in the pop-up does.
    void Choose(const char *menu, const char *item)
    {
        for (QAction *action : Find<QMenu>(menu)->actions())
            if (action->text() == item)
                return action->trigger();
        ADD_FAILURE() << item << " is not in " << menu;
    }

    std::vector<std::string> Menu(const char *name, std::string *marked) const
    {
        std::vector<std::string> items;
        for (QAction *action : Find<QMenu>(name)->actions()) {
            items.push_back(action->text().toStdString());
            if (action->isChecked())
                *marked = items.back();
        }
        return items;
    }

    // The paths of the one results message, sorted, and its predicate.
    std::vector<std::string> Results(std::string *predicate)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !recipient.messages.empty(); }));
        if (recipient.messages.empty())
            return {};
        const platform::Message &results = recipient.messages.back();
        EXPECT_EQ(results.what, kestrin::kMsgQueryResults);
        results.FindString("QueryString", predicate);
        std::vector<std::string> paths;
        entry_ref ref;
        for (int32_t i = 0; results.FindRef("ref", i, &ref) == B_OK; i++)
            paths.push_back(ref.path);
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    TempHome home;
    std::string root;
    platform::AlertRecorder alerts;
    MessageRecorder recipient;
    std::unique_ptr<QueryWindow> window;
};

} // namespace

TEST_F(QueryWindowTest, ShowsEveryControlWithItsStartingChoices)
{
    auto *tabs = Find<QTabWidget>("tab_view");
    ASSERT_EQ(tabs->count(), 3);
    EXPECT_EQ(tabs->tabText(0), "General");
    EXPECT_EQ(tabs->widget(1)->objectName(), "AdvancedView");
    EXPECT_EQ(tabs->widget(2)->objectName(), "LoadSaveView");
    EXPECT_EQ(Find<QCheckBox>("CaseSensative")->text(), "Case Sensative");
    EXPECT_EQ(Find<QCheckBox>("Archives")->text(), "Search Archives (ZIP,TAR,GZ)");
    for (const char *name : {"Text1", "TextToFind", "Date1m", "Date2y", "TextControl"})
        Find<QLineEdit>(name);

    std::string marked;
    EXPECT_EQ(Menu("Name", &marked),
              (std::vector<std::string>{"contains", "is not", "is", "starts with", "ends with"}));
    EXPECT_EQ(marked, "");
    for (const auto &[menu, item] :
         {std::pair{"FileSizeOperators", " < "}, {"FileSizeUnits", "Kilobytes"}, {"Units", "Days"}}) {
        Menu(menu, &marked);
        EXPECT_EQ(marked, item) << menu;
    }
    // The real volume list: the root is always one of them.
    const std::vector<std::string> volumes = Menu("Volumes", &marked);
    EXPECT_EQ(marked, "All BFS Volumes");
    EXPECT_NE(std::find(volumes.begin(), volumes.end(), "/"), volumes.end());
    Choose("Volumes", "/");
    EXPECT_TRUE(window->ChosenVolume().has_value());
    Choose("Volumes", "All BFS Volumes");
    EXPECT_FALSE(window->ChosenVolume().has_value());

    // The date boxes exclude each other.
    Click("DateBetween");
    Click("NotOlderThan");
    EXPECT_FALSE(Find<QCheckBox>("DateBetween")->isChecked());
    EXPECT_TRUE(Find<QCheckBox>("NotOlderThan")->isChecked());
    Click("DateBetween");
    EXPECT_FALSE(Find<QCheckBox>("NotOlderThan")->isChecked());
    EXPECT_TRUE(Find<QCheckBox>("DateBetween")->isChecked());

    Click("Help");
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].text,
              "Sorry no Query Help is available at this time.\nMaybe Someday...");
}

TEST_F(QueryWindowTest, RunsTheFormsPredicateAndSendsTheResults)
{
    Click("StartQuery");
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].text,
              "No Criteria Entered, Or Invalid Criteria\nPleaes Modify Query");
    EXPECT_FALSE(window->IsSearching());

    QTest::keyClicks(Find<QLineEdit>("Text1"), "foo");
    Choose("Name", "starts with");
    Click("FileSize");
    QTest::keyClicks(Find<QLineEdit>("FileSizeValue"), "2");
    Choose("FileSizeOperators", " > ");
    Click("StartQuery");
    std::string predicate;
    EXPECT_EQ(Results(&predicate), std::vector<std::string>{root + "/sub/foobar"});
    EXPECT_EQ(predicate, "((name==\"foo*\")&&(size>=2048))");
    EXPECT_FALSE(window->IsSearching());
    // The status shows whole, counts in the millions and all, inside the window.
    auto *status = Find<QLabel>("QueryStatus");
    EXPECT_TRUE(status->text().startsWith("Done: ")) << status->text().toStdString();
    status->setText("Searching: 99999999 looked at, 99999999 found");
    const bool fits = status->sizeHint().width() <= status->width()
                      || (status->wordWrap()
                          && status->heightForWidth(status->width()) <= status->height());
    EXPECT_TRUE(fits) << status->sizeHint().width() << " in " << status->width();
    EXPECT_TRUE(
        window->rect().contains(QRect(status->mapTo(window.get(), QPoint(0, 0)), status->size())));

    // Find Text: only files holding it.
    recipient.messages.clear();
    Click("FileSize");
    Choose("Name", "contains");
    Click("FindText");
    QTest::keyClicks(Find<QLineEdit>("TextToFind"), "small");
    Click("StartQuery");
    EXPECT_EQ(Results(&predicate), std::vector<std::string>{root + "/foo"});
    EXPECT_EQ(predicate, "(name==\"*foo*\")");
    EXPECT_EQ(alerts.Count(), 1u);
}

TEST_F(QueryWindowTest, CancelEndsASearchAtOnceAndTheWindowStays)
{
    window->SetRoots({"/"});
    QTest::keyClicks(Find<QLineEdit>("Text1"), "e");
    Click("StartQuery");
    EXPECT_TRUE(window->IsSearching());
    Click("CancelQuery");
    EXPECT_FALSE(window->IsSearching());
    EXPECT_TRUE(window->isVisible());

    // The next search is the one whose results come; the cancelled one
    // sends nothing.
    window->SetRoots({root});
    Choose("Name", "is");
    Find<QLineEdit>("Text1")->setText("barfoo");
    Click("StartQuery");
    std::string predicate;
    EXPECT_EQ(Results(&predicate), std::vector<std::string>{root + "/barfoo"});
    QCoreApplication::processEvents();
    ASSERT_EQ(recipient.messages.size(), 1u);
    EXPECT_EQ(predicate, "(name==\"barfoo\")");

    // With nothing running, Cancel closes the window.
    Click("CancelQuery");
    EXPECT_FALSE(window->isVisible());
}

// The focused pane's folder narrows the walk to its tree, unlike a volume;
// choosing a volume again walks the roots as before.
TEST_F(QueryWindowTest, ThePanesFolderNarrowsTheWalkToItsTree)
{
    std::string marked;
    const std::vector<std::string> withoutFolder = Menu("Volumes", &marked);
    QAction *none = nullptr;
    for (QAction *action : Find<QMenu>("Volumes")->actions())
        if (action->text().startsWith("Focused Pane's Folder"))
            none = action;
    ASSERT_NE(none, nullptr);
    EXPECT_FALSE(none->isEnabled()) << "a pane without a local folder offers none";

    window = std::make_unique<QueryWindow>(QRect(0, 0, 800, 600),
                                           &recipient,
                                           nullptr,
                                           root + "/sub");
    window->SetRoots({root});
    const std::string item = "Focused Pane's Folder: " + root + "/sub";
    EXPECT_EQ(Menu("Volumes", &marked).back(), item);
    QTest::keyClicks(Find<QLineEdit>("Text1"), "foo");
    Choose("Volumes", item.c_str());
    EXPECT_EQ(window->ChosenFolder(), root + "/sub");
    // The field shows the choice whole, or its middle elided with the whole as its tip.
    auto *field = Find<QPushButton>("Volumes");
    EXPECT_LE(field->fontMetrics().horizontalAdvance(field->text()), field->width());
    EXPECT_EQ(field->toolTip().toStdString(), item);
    Click("StartQuery");
    std::string predicate;
    EXPECT_EQ(Results(&predicate), std::vector<std::string>{root + "/sub/foobar"});
    EXPECT_EQ(predicate, "(name==\"*foo*\")");

    recipient.messages.clear();
    Choose("Volumes", "All BFS Volumes");
    EXPECT_FALSE(window->ChosenFolder().has_value());
    Click("StartQuery");
    EXPECT_EQ(Results(&predicate),
              (std::vector<std::string>{root + "/barfoo", root + "/foo", root + "/sub/foobar"}));
}
