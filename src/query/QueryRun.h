#pragma once

#include "platform/Background.h"
#include "platform/Message.h"
#include "query/QueryWalk.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {
class Handler;
}

namespace kestrin {

// One query, run on a worker of its own: the walk of the given roots, then
// the results message, one "ref" per entry in the order found and the
// predicate text as "QueryString", built on the worker so a million results
// cost the GUI thread nothing. When the worker is done it posts `doneWhat`
// to the handler it was given; the results are then ready to take.
//
// Cancel returns at once; the worker notices at its next entry and drops
// what it found. The destructor cancels and waits for the worker, which by
// then has at most one entry to finish.
class QueryRun
{
public:
    struct Request
    {
        std::string predicate;
        std::optional<std::string> textToFind;
        std::vector<std::string> roots;
        uint32_t resultsWhat = 0;
    };

    // Null, with the reason in `error`, when the predicate does not parse;
    // nothing runs then.
    static std::unique_ptr<QueryRun> Start(Request request,
                                           platform::Handler *notify,
                                           uint32_t doneWhat,
                                           std::string *error);
    ~QueryRun();

    QueryRun(const QueryRun &) = delete;
    QueryRun &operator=(const QueryRun &) = delete;

    void Cancel() { fWalk.Cancel(); }
    bool IsDone() const { return fDone; }
    int64_t LookedAt() const { return fWalk.LookedAt(); }
    int64_t Found() const { return fWalk.Found(); }
    // The results message once done (empty when cancelled); only once.
    platform::Message TakeResults();

private:
    QueryRun(Request request, QueryNode predicate);
    void Work(platform::Handler *notify, uint32_t doneWhat);

    Request fRequest;
    QueryWalk fWalk;
    platform::Message fResults;
    std::atomic<bool> fDone = false;
    platform::Background::Task fWork;
};

} // namespace kestrin
