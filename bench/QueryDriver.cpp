// kestrin-query-driver PREDICATE ROOT...
// Runs one query the way the query window does (parsed, walked on a worker
// with every core, the results message built there) over ROOT and prints,
// one per line:
//   query_ms    from the start to the results message being ready
//   found       how many entries matched
//   looked_at   how many entries were looked at
//   rss_mb      growth of resident memory, the results message included

#include "BenchSupport.h"
#include "platform/AlertRecorder.h"
#include "platform/Handler.h"
#include "query/QueryRun.h"

#include <QCoreApplication>
#include <chrono>
#include <cstdio>

namespace {

class Quitter : public platform::Handler
{
public:
    void MessageReceived(platform::Message &) override { QCoreApplication::quit(); }
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        fprintf(stderr, "usage: kestrin-query-driver PREDICATE ROOT...\n");
        return 2;
    }
    QCoreApplication app(argc, argv);
    platform::AlertRecorder alerts;
    Quitter quitter;
    kestrin::QueryRun::Request request;
    request.predicate = argv[1];
    request.roots.assign(argv + 2, argv + argc);
    request.resultsWhat = 601;

    const double before = ResidentMegabytes();
    const auto start = std::chrono::steady_clock::now();
    std::string error;
    auto run = kestrin::QueryRun::Start(request, &quitter, 1, &error);
    if (run == nullptr) {
        fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    app.exec();
    const double ms = Milliseconds(start);
    const platform::Message results = run->TakeResults();
    printf("query_ms %.1f\nfound %lld\nlooked_at %lld\nrss_mb %.1f\n",
           ms,
           (long long) run->Found(),
           (long long) run->LookedAt(),
           ResidentMegabytes() - before);
    return 0;
}
