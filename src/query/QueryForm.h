#pragma once

#include "query/QueryMessages.h"

#include <ctime>
#include <string>

namespace kestrin {

// What the query window's controls hold, and the predicate they make
// (GetResults). Text fields are as typed; menus hold the code of the chosen
// item. Numbers are read as their leading decimal digits, anything else as 0.
struct QueryForm
{
    std::string name; // Text1
    uint32_t nameOperator = kMsgNameContains;

    bool fileSize = false;
    std::string size;
    uint32_t sizeOperator = kMsgSizeLess;
    uint32_t sizeUnit = kMsgSizeKilobytes;

    bool dateBetween = false;
    std::string date1Month, date1Day, date1Year;
    std::string date2Month, date2Day, date2Year;

    bool notOlderThan = false;
    std::string age;
    uint32_t ageUnit = kMsgAgeDays;

    // The predicate text, at most 1024 bytes; empty after the alerts that
    // say why there is none. `now` is the wall clock, for "Not Older Than".
    std::string Predicate(time_t now) const;
};

} // namespace kestrin
