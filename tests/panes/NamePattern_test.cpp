#include "PaneCoreSupport.h"

#include "panes/NamePattern.h"
#include "platform/Entry.h"

using kestrin::NamePattern;

namespace {

TEST(NamePatternTest, PatternsAgainstNames)
{
    struct Case
    {
        const char *patterns;
        const char *name;
        bool matches;
    };
    const Case cases[] = {
        {"*.txt", "notes.txt", true},
        {"*.txt", "notes.txt.bak", false},
        {"*.txt", "notes.TXT", false}, // names are bytes: case counts
        {"*.TXT", "notes.txt", false},
        {"*.txt;*.md", "README.md", true},
        {"*.txt;*.md", "README.rst", false},
        {" *.txt ; *.md ", "README.md", true}, // blanks around a pattern go
        {"*.txt;;", "a.txt", true},
        {"a?c", "abc", true},
        {"a?c", "ac", false},
        {"a?c", "aéc", true}, // ? is one character, not one byte
        {"Makefile", "Makefile", true},
        {"Makefile", "Makefile.am", false},
        {"my file*", "my file.txt", true}, // a blank inside stays
        {"*", ".hidden", true},
        {"", "anything", false},
        {" ; ", "anything", false},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::string(each.patterns) + " / " + each.name);
        EXPECT_EQ(NamePattern(each.patterns).Matches(each.name), each.matches);
    }
}

using PatternMarksTest = PaneCoreFixture;

// Query results name their rows by whole paths; the pattern is for the leaf.
TEST_F(PatternMarksTest, QueryRowsAreMatchedByTheirLeaf)
{
    fs::create_directory(Folder() + "/txt");
    MakeFile(Folder() + "/txt/notes.md");
    const kestrin::DirListItem row(platform::Entry(Folder() + "/txt/notes.md"),
                                   kestrin::RowColors{},
                                   false,
                                   kestrin::RowName::Path,
                                   "");
    ASSERT_TRUE(row.NamedByPath());
    EXPECT_TRUE(NamePattern("*.md").Picks(row, false));
    EXPECT_TRUE(NamePattern("notes.md").Picks(row, false));
    EXPECT_FALSE(NamePattern("*txt*").Picks(row, false));
}

} // namespace
