#include "PaneTestSupport.h"

#include "panes/KsFtr.h"
#include "panes/PathField.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>

using kestrin::PathField;

namespace {

// A pane on ~/work, active, whose header is clicked into a path field.
class PathFieldTest : public PaneFixture
{
protected:
    void SetUp() override
    {
        PaneFixture::SetUp();
        fs::create_directories(Work() + "/sub folder/deep");
        fs::create_directories(Work() + "/subway");
        fs::create_directories(Work() + "/.secret");
        WriteFileBytes(Work() + "/notes.txt", "text");
        Open(Work());
        QApplication::setActiveWindow(fPane.get());
        ASSERT_TRUE(QTest::qWaitForWindowActive(fPane.get()));
        fPane->List()->setFocus();
    }

    std::string Work() const { return fHome.Home() + "/work"; }

    // Clicks the header and checks that the field took the keyboard with
    // the pane's path.
    PathField &OpenField()
    {
        QTest::mouseClick(fPane->Header(), Qt::LeftButton);
        PathField *field = fPane->PathEdit();
        EXPECT_NE(field, nullptr);
        EXPECT_TRUE(WaitFor([&] { return QApplication::focusWidget() == field; }));
        EXPECT_EQ(field->text().toStdString(), fPane->List()->Source().PathText());
        EXPECT_EQ(field->selectedText(), field->text());
        return *field;
    }

    // Keys go to whatever has the keyboard, as a user's do.
    static void Keys(const QString &text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    static void Key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

    bool Offered(PathField &field, const QStringList &expected)
    {
        QCompleter *completer = field.Completer();
        return WaitFor([&] {
            QStringList shown;
            for (int i = 0; completer->setCurrentRow(i); i++)
                shown.append(completer->currentCompletion());
            completer->setCurrentRow(0);
            return completer->popup()->isVisible() && shown == expected;
        });
    }

    // Return, and the listing that follows.
    void Go()
    {
        EXPECT_TRUE(Listed([] { Key(Qt::Key_Return); }));
    }
};

} // namespace

TEST_F(PathFieldTest, OffersFolderNamesAsTypedAndGoesWhereReturnLeads)
{
    PathField &field = OpenField();
    Keys("sub");
    EXPECT_TRUE(Offered(field, {"sub folder/", "subway/"}));
    Key(Qt::Key_Tab);
    EXPECT_EQ(field.text(), "sub folder/");
    EXPECT_TRUE(field.hasFocus());
    Keys("d");
    EXPECT_TRUE(Offered(field, {"sub folder/deep/"}));
    // Hidden folders only once a name starts with a dot; a home folder
    // named by "~" keeps its "~".
    field.clear();
    Keys("~/work/");
    EXPECT_TRUE(Offered(field, {"~/work/sub folder/", "~/work/subway/"}));
    Keys(".");
    EXPECT_TRUE(Offered(field, {"~/work/.secret/"}));

    field.clear();
    Keys("~/work/sub folder/");
    Go();
    EXPECT_FALSE(field.isVisible());
    EXPECT_TRUE(fPane->List()->hasFocus());
    EXPECT_EQ(fPane->Header()->Text(), Work() + "/sub folder");

    // A file's folder, with the file selected; $HOME as the shell reads it.
    OpenField();
    Keys("$HOME/work/notes.txt");
    Go();
    EXPECT_EQ(fPane->Header()->Text(), Work());
    EXPECT_EQ(fPane->List()->CurrentSelection(), fPane->List()->FindItem("notes.txt"));
    EXPECT_TRUE(fAlerts.Shown().empty());
}

TEST_F(PathFieldTest, AMissingPartStaysMarkedAndEscapeChangesNothing)
{
    PathField &field = OpenField();
    Keys("sub folder/gone/deeper");
    Key(Qt::Key_Return);
    const QString typed = QString::fromStdString(Work() + "/sub folder/gone/deeper");
    ASSERT_TRUE(WaitFor([&] { return field.IsMarkingMissing(); }));
    EXPECT_TRUE(field.isVisible());
    EXPECT_TRUE(field.hasFocus());
    EXPECT_EQ(field.text(), typed);
    EXPECT_EQ(field.selectedText().toStdString(), "gone/deeper");
    EXPECT_EQ(fPane->Footer()->Text(), "\"gone\" not found in " + Work() + "/sub folder");
    EXPECT_EQ(fPane->Header()->Text(), Work());

    // Typing again clears the mark and the message.
    Key(Qt::Key_End);
    Keys("x");
    EXPECT_FALSE(field.IsMarkingMissing());
    EXPECT_EQ(fPane->Footer()->Text(), fPane->List()->GetFiles());

    // Escape: the pane as it was, its list with the keyboard.
    Key(Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    EXPECT_TRUE(fPane->List()->hasFocus());
    EXPECT_EQ(fPane->Header()->Text(), Work());
    EXPECT_EQ(fPane->Footer()->Text(), fPane->List()->GetFiles());
    EXPECT_FALSE(fPane->List()->IsListing());
    EXPECT_TRUE(fAlerts.Shown().empty());
}
