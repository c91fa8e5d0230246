#include "PaneCoreSupport.h"

#include "panes/PathCompletion.h"

using kestrin::PathCompletion;

// The folders of what is typed, as it stands: the answer for a folder the
// text has already left is dropped, and text that stays in one folder reads
// it once.
TEST(PathCompletionTest, OffersTheFoldersOfTheTextAsItStandsAndDropsStaleAnswers)
{
    TempHome home;
    const std::string root = home.Home();
    for (const char *folder : {"a/x", "b/y", "b/.hidden", "c/z"})
        fs::create_directories(root + "/" + folder);
    WriteFileBytes(root + "/b/file", "");

    PathCompletion completion;
    QSignalSpy offered(&completion, &PathCompletion::Offered);
    const auto offers = [&] {
        std::vector<QStringList> all;
        for (const QList<QVariant> &arguments : offered)
            all.push_back(arguments.at(0).toStringList());
        return all;
    };
    completion.Typed("a/", root);
    completion.Typed("b/", root);
    completion.Typed("b/y", root);
    ASSERT_TRUE(WaitFor([&] { return offers().size() == 3; }));
    completion.Typed("c/", root);
    ASSERT_TRUE(WaitFor([&] { return offers().size() == 5; }));
    completion.Typed("b/.h", home.Root() + "/home");
    ASSERT_TRUE(WaitFor([&] { return offers().size() == 7; }));
    EXPECT_EQ(offers(),
              (std::vector<QStringList>{{}, {}, {"b/y/"}, {}, {"c/z/"}, {}, {"b/.hidden/", "b/y/"}}));
}
