#pragma once

#include "fileops/TransferPlace.h"
#include "fileops/TransferPlan.h"
#include "platform/Message.h"

namespace kestrin {

// Decides what one request of the panes does between two places: a copy,
// move, link, pack or unpack ("TypeOfCopy", or the request's code) from the
// place the rows come from to the place they go to. Every pairing of the
// five kinds of place and the five operations is a row of one table; the
// answer is the steps the copy engine runs, or the refusal the user sees.
// Windows and panes ask here and never decide on the kind of place.
class TransferPlanner
{
public:
    enum class Operation { Copy, Move, Link, Pack, Unpack };

    static Operation OperationOf(const platform::Message &request);

    // `request` as the source pane built it (its "refs" or names); a drop
    // onto a folder row carries that folder in "DropFolder".
    static TransferPlan Plan(const platform::Message &request,
                             const TransferPlace &from,
                             const TransferPlace &to);
};

} // namespace kestrin
