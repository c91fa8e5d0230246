#include "query/QueryForm.h"

#include "app/AppUtils.h"
#include "app/NumberText.h"
#include "query/QueryPredicate.h"

namespace kestrin {

namespace {

constexpr size_t kMaxPredicateLength = 1024;

QueryOp NameOperator(uint32_t code)
{
    switch (code) {
    case kMsgNameIsNot:
        return QueryOp::NotEqual;
    case kMsgNameIs:
        return QueryOp::Equal;
    case kMsgNameStartsWith:
        return QueryOp::BeginsWith;
    case kMsgNameEndsWith:
        return QueryOp::EndsWith;
    default:
        return QueryOp::Contains;
    }
}

// " > " and " < " have always meant "at least" and "at most".
QueryOp SizeOperator(uint32_t code)
{
    switch (code) {
    case kMsgSizeEqual:
        return QueryOp::Equal;
    case kMsgSizeGreater:
        return QueryOp::GreaterOrEqual;
    default:
        return QueryOp::LessOrEqual;
    }
}

// The size in a signed 32-bit integer: 2 GiB and more wrap, as they always did.
int32_t SizeValue(const std::string &text, uint32_t unit)
{
    const uint32_t number = uint32_t(kestrin::atoi(text.c_str()));
    const int shift = unit == kMsgSizeKilobytes ? 10 : unit == kMsgSizeMegabytes ? 20 : 0;
    return int32_t(number << shift);
}

int64_t AgeSeconds(const std::string &text, uint32_t unit)
{
    const int64_t number = kestrin::atoi(text.c_str());
    switch (unit) {
    case kMsgAgeHours:
        return number * 3600;
    case kMsgAgeDays:
        return number * 86400;
    case kMsgAgeWeeks:
        return number * 604800;
    case kMsgAgeYears:
        return int64_t(double(number) * 31557600.0);
    default:
        return number;
    }
}

// Midnight, local time, of the given day.
time_t LocalMidnight(const std::string &month, const std::string &day, const std::string &year)
{
    struct tm date = {};
    date.tm_mon = kestrin::atoi(month.c_str()) - 1;
    date.tm_mday = kestrin::atoi(day.c_str());
    date.tm_year = kestrin::atoi(year.c_str()) - 1900;
    date.tm_isdst = -1;
    return mktime(&date);
}

} // namespace

std::string QueryForm::Predicate(time_t now) const
{
    QueryPredicate query;
    bool criteria = false;
    if (!name.empty()) {
        query.PushAttr("name");
        query.PushString(name);
        query.PushOp(NameOperator(nameOperator));
        criteria = true;
    }
    if (fileSize) {
        query.PushAttr("size");
        query.PushInt32(SizeValue(size, sizeUnit));
        query.PushOp(SizeOperator(sizeOperator));
        if (!name.empty())
            query.PushOp(QueryOp::And);
        criteria = true;
    }
    if (dateBetween || notOlderThan) {
        criteria = true;
        if (dateBetween) {
            const time_t first = LocalMidnight(date1Month, date1Day, date1Year);
            const time_t second = LocalMidnight(date2Month, date2Day, date2Year);
            if (second <= first) {
                MsgBox("Date 2 must be greater then Date1.");
                criteria = false;
            }
            query.PushAttr("last_modified");
            query.PushInt64(first);
            query.PushOp(QueryOp::GreaterOrEqual);
            query.PushAttr("last_modified");
            query.PushInt64(second);
            query.PushOp(QueryOp::LessOrEqual);
            query.PushOp(QueryOp::And);
        } else {
            query.PushAttr("last_modified");
            query.PushInt64(int64_t(now) - AgeSeconds(age, ageUnit));
            query.PushOp(QueryOp::GreaterOrEqual);
        }
        if (!name.empty() || fileSize)
            query.PushOp(QueryOp::And);
    }
    if (!criteria) {
        MsgBox("No Criteria Entered, Or Invalid Criteria\nPleaes Modify Query");
        return {};
    }
    std::string text = query.Text();
    if (text.size() > kMaxPredicateLength)
        text.resize(kMaxPredicateLength);
    return text;
}

} // namespace kestrin
