#include "app/SideFile.h"
#include "panes/PlaceHistory.h"
#include "panes/PlaceText.h"
#include "panes/SavedPlace.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

using namespace kestrin;

namespace {

using Places = std::vector<std::string>;

// One step of a walk through a pane's places: a visit ("+place"), Back
// ("<") or Forward (">"); `lands` is where Back or Forward lead ("" for
// nowhere, at an end).
struct Step
{
    std::string step;
    std::string lands;
};

struct Walk
{
    const char *name;
    std::vector<Step> steps;
    Places places;
    size_t current;
};

} // namespace

TEST(PlaceHistoryTest, BackForwardAndANewPlaceAfterGoingBack)
{
    const std::vector<Walk> walks = {
        {"nothing to go back or forward to", {{"<", ""}, {">", ""}}, {}, 0},
        {"one place has no other", {{"+/a", ""}, {"<", ""}, {">", ""}}, {"/a"}, 0},
        {"back and forward again",
         {{"+/a", ""}, {"+/b", ""}, {"+/c", ""}, {"<", "/b"}, {"<", "/a"}, {"<", ""}, {">", "/b"}},
         {"/a", "/b", "/c"},
         1},
        {"listed again is no new place",
         {{"+/a", ""}, {"+/a", ""}, {"+/b", ""}, {"+/b", ""}, {"<", "/a"}},
         {"/a", "/b"},
         0},
        {"arriving where Back led keeps the places ahead",
         {{"+/a", ""}, {"+/b", ""}, {"<", "/a"}, {"+/a", ""}, {">", "/b"}, {">", ""}},
         {"/a", "/b"},
         1},
        {"a new place after going back drops the places ahead",
         {{"+/a", ""},
          {"+/b", ""},
          {"+/c", ""},
          {"<", "/b"},
          {"+/b", ""},
          {"<", "/a"},
          {"+/d", ""},
          {">", ""}},
         {"/a", "/d"},
         1},
        {"query results are not kept", {{"+/a", ""}, {"+", ""}, {"+/b", ""}}, {"/a", "/b"}, 1},
    };
    for (const Walk &walk : walks) {
        SCOPED_TRACE(walk.name);
        PlaceHistory history;
        std::string shown;
        for (const Step &step : walk.steps) {
            SCOPED_TRACE(step.step);
            if (step.step[0] == '+') {
                shown = step.step.substr(1);
                history.Visit(shown);
                continue;
            }
            const std::optional<std::string> lands = step.step == "<" ? history.Back(shown)
                                                                      : history.Forward();
            EXPECT_EQ(lands.value_or(""), step.lands);
            if (lands)
                shown = *lands;
        }
        EXPECT_EQ(history.Places(), walk.places);
        EXPECT_EQ(history.Current(), walk.current);
    }
}

TEST(PlaceHistoryTest, BoundedAndRecentNewestFirstWithoutRepeats)
{
    PlaceHistory history(3);
    auto session = std::make_shared<RecentPlaces>(4);
    history.ShareSession(session);
    PlaceHistory other;
    other.ShareSession(session);
    for (const char *place : {"/a", "/b", "/a", "/c", "/d"})
        history.Visit(place);
    other.Visit("/x");
    other.Visit("/c");

    EXPECT_EQ(history.Places(), (Places{"/a", "/c", "/d"}));
    EXPECT_EQ(history.Current(), 2u);
    EXPECT_EQ(history.Recent(), (Places{"/d", "/c", "/a", "/b"}));
    EXPECT_EQ(other.Recent(), (Places{"/c", "/x"}));
    // Across both panes, the newest four.
    EXPECT_EQ(session->Places(), (Places{"/c", "/x", "/d", "/a"}));
}

TEST(PlaceHistoryTest, KeptInTheSideFileAndReadBack)
{
    TempHome home;
    PlaceHistory history;
    for (const char *place : {"/a", "/b", "/c"})
        history.Visit(place);
    history.Back("/c");
    SideFile file = SideFile::Read("Kestrin.extras");
    file.Set("HiddenPane1", "1");
    history.Save(file, "HistoryPane1");
    ASSERT_TRUE(file.Write());

    PlaceHistory again;
    again.Load(SideFile::Read("Kestrin.extras"), "HistoryPane1");
    EXPECT_EQ(again.Places(), (Places{"/a", "/b", "/c"}));
    EXPECT_EQ(again.Current(), 1u);
    EXPECT_EQ(again.Recent(), (Places{"/c", "/b", "/a"}));
    EXPECT_EQ(again.Forward(), "/c");
    EXPECT_EQ(SideFile::Read("Kestrin.extras").Get("HiddenPane1"), "1");

    // A file edited by hand: an index past the end, a repeat in the recent
    // places.
    SideFile edited = SideFile::Read("Kestrin.extras");
    edited.Set("HistoryPane1At", "99");
    edited.SetAll("HistoryPane1Recent", {"/b", "/a", "/b"});
    PlaceHistory odd;
    odd.Load(edited, "HistoryPane1");
    EXPECT_EQ(odd.Current(), 2u);
    EXPECT_EQ(odd.Recent(), (Places{"/b", "/a"}));
}

TEST(SavedPlaceTest, RecalledPlacesOfEachKindAndTheirTitles)
{
    struct Row
    {
        std::string recalled;
        std::string title;
    };
    const std::vector<Row> rows = {
        {"/home/user/My Files", "/home/user/My Files"},
        {PlaceText::ArchivePlace("/x/a.zip", ""), "/x/a.zip"},
        {PlaceText::ArchivePlace("/x/a.zip", "sub/deeper/"), "/x/a.zip/sub/deeper/"},
        {PlaceText::ServerPlace("Work server", "/pub/in"), "Work server: /pub/in"},
        {PlaceText::ServerPlace("Work server", ""), "Work server"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(PlaceText::Title(row.recalled), row.title) << row.recalled;

    TempHome home;
    const auto archive = SavedPlace::Read(PlaceText::ArchivePlace("/x/a.zip", "sub/"), "/tmp");
    EXPECT_EQ(archive->RecalledPlace(), PlaceText::ArchivePlace("/x/a.zip", "sub/"));
    EXPECT_EQ(archive->Folder(), "/x");
    const auto folder = SavedPlace::Read("/home/user/My Files", "/tmp");
    EXPECT_EQ(folder->RecalledPlace(), "/home/user/My Files");
}
