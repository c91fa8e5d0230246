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
    run->fWorker = std::thread([raw = run.get(), notify, doneWhat] { raw->Work(notify, doneWhat); });
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
    if (fWorker.joinable())
        fWorker.join();
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
