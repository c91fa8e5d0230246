#include "TempHome.h"
#include "platform/Node.h"
#include "query/PredicateParser.h"
#include "query/QueryMatcher.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using kestrin::QueryMatcher;

namespace {

// An entry as the walk hands it over: a real file, stat'ed on demand, with
// a count of how often it was.
class FileCandidate : public kestrin::QueryCandidate
{
public:
    FileCandidate(std::string folder, std::string name)
        : fFolder(std::move(folder))
        , fName(std::move(name))
    {}
    std::string_view Name() const override { return fName; }
    std::string Path() const override { return fFolder + "/" + fName; }
    const struct stat *Info() override
    {
        stats++;
        return lstat(Path().c_str(), &fInfo) == 0 ? &fInfo : nullptr;
    }
    int stats = 0;

private:
    std::string fFolder, fName;
    struct stat fInfo = {};
};

bool Matches(const std::string &predicate, kestrin::QueryCandidate &candidate)
{
    const auto parsed = kestrin::PredicateParser::Parse(predicate);
    EXPECT_TRUE(parsed.predicate) << parsed.error;
    return parsed.predicate && QueryMatcher::Matches(*parsed.predicate, candidate);
}

void ExpectMatches(kestrin::QueryCandidate &candidate,
                   std::initializer_list<const char *> matching,
                   std::initializer_list<const char *> failing)
{
    for (const char *predicate : matching)
        EXPECT_TRUE(Matches(predicate, candidate)) << predicate;
    for (const char *predicate : failing)
        EXPECT_FALSE(Matches(predicate, candidate)) << predicate;
}

} // namespace

TEST(QueryMatcher, WildcardsMatchWholeNamesByCharacter)
{
    struct Case
    {
        const char *text, *pattern;
        bool matches;
    };
    const Case cases[] = {
        {"report.txt", "*.txt", true},
        {"report.txt", "*.tx", false},
        {"report.txt", "r?port*", true},
        {"report.txt", "report", false},
        {"", "*", true},
        {"", "?", false},
        {"a7b3c", "*7*3*", true},
        {"a3b7c", "*7*3*", false},
        {"aaaaaaaaab", "*a*a*b", true},
        {"aaaaaaaaaa", "*a*a*b", false},
        {"Größe", "Gr??e", true},
        {"Größe", "Gr?e", false},
        {"bad\xff\xfename", "bad??name", true},
        {"mississippi", "m*iss*ppi", true},
    };
    for (const Case &c : cases)
        EXPECT_EQ(QueryMatcher::MatchesPattern(c.text, c.pattern), c.matches)
            << c.text << " " << c.pattern;
}

TEST(QueryMatcher, NamesSizesAndDatesOfRealFiles)
{
    TempHome home;
    WriteFileBytes(home.Root() + "/notes 1.txt", std::string(2000, 'x'));
    FileCandidate file(home.Root(), "notes 1.txt");

    EXPECT_TRUE(Matches("name==\"notes*1.txt\"", file));
    EXPECT_EQ(file.stats, 0) << "a name alone needs no stat";
    FileCandidate again(home.Root(), "notes 1.txt");
    EXPECT_FALSE(Matches("(name==\"*.doc\")&&(size>=0)", again));
    EXPECT_EQ(again.stats, 0) << "a name that fails spares the stat";
    // Ordered comparisons of names are byte-wise; a number as text.
    ExpectMatches(file,
                  {"(name!=\"*.doc\")||(size<0)",
                   "!(size>2000)",
                   "last_modified>=1000000000",
                   "(name>\"notes\")&&(name<\"nz\")",
                   "size==\"2000\"",
                   "(name==\"*.txt\")&&(size>=2000)&&(size<=2000)"},
                  {"last_modified<1000000000", "(name==\"*.txt\")&&(size>=2001)"});
    FileCandidate gone(home.Root(), "gone");
    ExpectMatches(gone, {}, {"size>=0", "size<0"});
}

TEST(QueryMatcher, TypedAttributesCompareByTheirType)
{
    TempHome home;
    const std::string path = home.Root() + "/song";
    WriteFileBytes(path, "");
    platform::Node node(path);
    const int32_t rating = -3;
    const double tempo = 120.5;
    const uint8_t flag = 200;
    if (node.WriteAttrString("Audio:Artist", "Nina Simone") < 0
        || node.WriteAttr("Media:Rating", B_INT32_TYPE, 0, &rating, sizeof rating) < 0)
        GTEST_SKIP() << "no extended attributes here";
    node.WriteAttr("Audio:Tempo", B_DOUBLE_TYPE, 0, &tempo, sizeof tempo);
    node.WriteAttr("Flag", B_UINT8_TYPE, 0, &flag, sizeof flag);
    FileCandidate song(home.Root(), "song");

    // Without the attribute nothing matches, not even !=.
    ExpectMatches(song,
                  {"Audio:Artist==\"Nina*\"",
                   "Media:Rating<0",
                   "Media:Rating==-3",
                   "Audio:Tempo>120.25",
                   "Audio:Tempo<121",
                   "Flag==200",
                   "!(Media:Missing==\"*\")"},
                  {"Audio:Artist==\"Nina\"", "Media:Missing!=\"x\"", "Media:Missing==\"*\""});
}
