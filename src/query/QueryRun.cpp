#include "query/QueryRun.h"

#include "app/AppUtils.h"
#include "platform/Handler.h"
#include "query/PredicateParser.h"

namespace kestrin {

std::unique_ptr<QueryRun> QueryRun::Start(Request request,
                                          platform::Handler *notify,
                                          uint32_t doneWhat,
                                          std::string *error)
{
    PredicateParser::Result parsed = PredicateParser::Parse(request.predicate);
    if (!parsed.predicate) {
        if (error != nullptr)
            *error = parsed.error;
        return nullptr;
    }
    std::unique_ptr<QueryRun> run(new QueryRun(std::move(request), std::move(*parsed.predicate)));
    // A thread of its own: a walk of every volume takes as long as it takes.
    run->fWork = platform::Background::Start(
        nullptr,
        [raw = run.get(), notify, doneWhat](const platform::Background::Task &) {
            raw->Work(notify, doneWhat);
        },
        platform::Background::Thread::Own);
    return run;
}

QueryRun::QueryRun(Request request, QueryNode predicate)
    : fRequest(std::move(request))
    , fWalk(std::move(predicate), fRequest.textToFind)
{
    fWalk.onReadError = [](const std::string &path) {
        MsgBox("We Got a Bad Return from File.ReadAt");
        MsgBox(path.c_str());
    };
}

QueryRun::~QueryRun()
{
    Cancel();
    fWork.Wait();
}

void QueryRun::Work(platform::Handler *notify, uint32_t doneWhat)
{
    fWalk.Run(fRequest.roots);
    if (!fWalk.Cancelled()) {
        fResults = platform::Message(fRequest.resultsWhat);
        for (entry_ref &ref : fWalk.TakeResults())
            fResults.AddRef("ref", std::move(ref));
        fResults.AddString("QueryString", fRequest.predicate);
    }
    fDone = true;
    if (notify != nullptr)
        notify->Post(platform::Message(doneWhat));
}

platform::Message QueryRun::TakeResults()
{
    return std::move(fResults);
}

} // namespace kestrin
