#include "platform/AlertRecorder.h"
#include "query/PredicateParser.h"
#include "query/QueryForm.h"

#include <gtest/gtest.h>

using kestrin::QueryForm;

namespace {

constexpr time_t kNow = 1700000000;
const char *const kNoCriteria = "No Criteria Entered, Or Invalid Criteria\nPleaes Modify Query";

std::vector<std::string> AlertTexts(const platform::AlertRecorder &alerts)
{
    std::vector<std::string> texts;
    for (const platform::Alert &alert : alerts.Shown())
        texts.push_back(alert.text);
    return texts;
}

time_t Midnight(int year, int month, int day)
{
    struct tm date = {};
    date.tm_year = year - 1900;
    date.tm_mon = month - 1;
    date.tm_mday = day;
    date.tm_isdst = -1;
    return mktime(&date);
}

} // namespace

TEST(QueryForm, EachCriterionAndTheirCombinations)
{
    platform::AlertRecorder alerts;
    QueryForm form;
    form.name = "foo";
    form.nameOperator = kestrin::kMsgNameStartsWith;
    form.fileSize = true;
    form.size = "1";
    form.sizeOperator = kestrin::kMsgSizeGreater;
    EXPECT_EQ(form.Predicate(kNow), "((name==\"foo*\")&&(size>=1024))");

    // " < " is at most; megabytes shift by 20; a blank becomes a wildcard.
    form.name = "my file";
    form.nameOperator = kestrin::kMsgNameContains;
    form.sizeOperator = kestrin::kMsgSizeLess;
    form.sizeUnit = kestrin::kMsgSizeMegabytes;
    form.size = "3MB";
    EXPECT_EQ(form.Predicate(kNow), "((name==\"*my*file*\")&&(size<=3145728))");

    // Sizes of 2 GiB and more wrap in 32 bits.
    form.name.clear();
    form.size = "2048";
    EXPECT_EQ(form.Predicate(kNow), "(size<=-2147483648)");
    form.sizeOperator = kestrin::kMsgSizeEqual;
    form.sizeUnit = kestrin::kMsgSizeBytes;
    form.size = "x";
    EXPECT_EQ(form.Predicate(kNow), "(size==0)");

    // Not Older Than alone: no AND.
    form.fileSize = false;
    form.notOlderThan = true;
    form.age = "2";
    EXPECT_EQ(form.Predicate(kNow), "(last_modified>=" + std::to_string(kNow - 172800) + ")");
    form.ageUnit = kestrin::kMsgAgeYears;
    form.age = "1";
    EXPECT_EQ(form.Predicate(kNow), "(last_modified>=" + std::to_string(kNow - 31557600) + ")");

    // Name, size and date: each AND joins what came before.
    form.name = "a";
    form.nameOperator = kestrin::kMsgNameIsNot;
    form.fileSize = true;
    form.size = "5";
    form.ageUnit = kestrin::kMsgAgeHours;
    EXPECT_EQ(form.Predicate(kNow),
              "(((name!=\"a\")&&(size==5))&&(last_modified>=" + std::to_string(kNow - 3600) + "))");

    // Date Between wins over Not Older Than, at local midnights.
    form.fileSize = false;
    form.dateBetween = true;
    form.date1Month = "1", form.date1Day = "2", form.date1Year = "2001";
    form.date2Month = "12", form.date2Day = "31", form.date2Year = "2002";
    const std::string t1 = std::to_string(Midnight(2001, 1, 2));
    const std::string t2 = std::to_string(Midnight(2002, 12, 31));
    EXPECT_EQ(form.Predicate(kNow),
              "((name!=\"a\")&&((last_modified>=" + t1 + ")&&(last_modified<=" + t2 + ")))");
    EXPECT_TRUE(alerts.Shown().empty());

    QueryForm nameOnly;
    nameOnly.name = "x";
    for (const std::string &text : {form.Predicate(kNow), nameOnly.Predicate(kNow)})
        EXPECT_EQ(kestrin::PredicateParser::Parse(text).predicate->Text(), text);
}

TEST(QueryForm, MissingOrInvalidCriteriaAlertAndMakeNoPredicate)
{
    platform::AlertRecorder alerts;
    EXPECT_EQ(QueryForm().Predicate(kNow), "");
    EXPECT_EQ(AlertTexts(alerts), std::vector<std::string>{kNoCriteria});

    // The same day twice: both alerts, even with a name given.
    alerts.Clear();
    QueryForm form;
    form.name = "foo";
    form.dateBetween = true;
    form.date1Month = form.date2Month = "1";
    form.date1Day = form.date2Day = "1";
    form.date1Year = form.date2Year = "2001";
    EXPECT_EQ(form.Predicate(kNow), "");
    EXPECT_EQ(AlertTexts(alerts),
              (std::vector<std::string>{"Date 2 must be greater then Date1.", kNoCriteria}));
}
