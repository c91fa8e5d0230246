// kestrin-clv-bench [Google Benchmark flags]
// The list widget with the row counts of a big folder: appending a million
// rows, laying them out, sorting, scattered inserts and removals, and one
// paint of the visible part. Runs on Qt's offscreen platform.

#include "widgets/CLVPaintedItem.h"
#include "widgets/ColumnListView.h"

#include <QApplication>
#include <QPainter>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <vector>

namespace {

using kestrin::CLVListItem;
using kestrin::ColumnListView;

// A row with two independent random keys, drawn as a plain fill.
class BenchRow : public CLVPaintedItem
{
public:
    BenchRow(uint32_t first, uint32_t second)
        : keys{first, second}
    {}

    void DrawItemColumn(QPainter &painter, const QRect &rect, int, bool selected, bool) override
    {
        painter.fillRect(rect, selected ? Qt::darkBlue : Qt::white);
    }

    uint32_t keys[2];
};

int CompareKeys(const CLVListItem *a, const CLVListItem *b, int32_t key)
{
    const uint32_t left = static_cast<const BenchRow *>(a)->keys[key];
    const uint32_t right = static_cast<const BenchRow *>(b)->keys[key];
    return left < right ? -1 : left > right ? 1 : 0;
}

std::vector<std::unique_ptr<CLVListItem>> MakeRows(int count, uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<std::unique_ptr<CLVListItem>> rows;
    rows.reserve(size_t(count));
    for (int index = 0; index < count; index++)
        rows.push_back(std::make_unique<BenchRow>(random(), random()));
    return rows;
}

std::unique_ptr<ColumnListView> MakeView()
{
    auto view = std::make_unique<ColumnListView>();
    view->resize(600, 400);
    view->AddColumn("First", 200, 40, kestrin::CLV_SORT_KEYABLE);
    view->AddColumn("Second", 200, 40, kestrin::CLV_SORT_KEYABLE);
    view->SetSortFunction(CompareKeys);
    return view;
}

// Makes the view lay out every row, as the first paint after a change does.
void LayOut(ColumnListView &view)
{
    benchmark::DoNotOptimize(view.IndexOf(QPoint(1, 1)));
}

// Adding a million rows at once; with `layOut`, also the layout of the
// first paint that follows.
void AddRows(benchmark::State &state, bool layOut)
{
    const int count = int(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<ColumnListView> view = MakeView();
        std::vector<std::unique_ptr<CLVListItem>> rows = MakeRows(count, 1);
        state.ResumeTiming();
        view->AddList(std::move(rows));
        if (layOut)
            LayOut(*view);
        state.PauseTiming();
        view.reset();
        state.ResumeTiming();
    }
}
BENCHMARK_CAPTURE(AddRows, AddList, false)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(AddRows, AddListAndLayOut, true)->Arg(1000000)->Unit(benchmark::kMillisecond);

// Each pass sorts by the other key, so the rows are always in random order
// for the key being sorted by.
void SortItems(benchmark::State &state)
{
    std::unique_ptr<ColumnListView> view = MakeView();
    view->AddList(MakeRows(int(state.range(0)), 2));
    view->Select(view->CountItems() / 2);
    int key = 0;
    for (auto _ : state) {
        view->SetSortKey(key);
        view->SortItems();
        key = 1 - key;
    }
}
BENCHMARK(SortItems)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// A thousand new rows spread over a million, then taken out again.
void InsertAndRemoveScattered(benchmark::State &state)
{
    std::unique_ptr<ColumnListView> view = MakeView();
    view->AddList(MakeRows(1000000, 3));
    view->Select(500000);
    std::mt19937 random(4);
    for (auto _ : state) {
        std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows;
        for (int index = 0; index < 1000; index++)
            rows.emplace_back(int(random() % 1000000), std::make_unique<BenchRow>(0, 0));
        view->InsertItems(std::move(rows));
        std::vector<int> indexes;
        for (int index = 0; index < view->CountItems(); index += 1000)
            indexes.push_back(index + 1);
        benchmark::DoNotOptimize(view->RemoveItems(std::move(indexes)));
    }
}
BENCHMARK(InsertAndRemoveScattered)->Unit(benchmark::kMillisecond);

void PaintTheMiddleOfAMillion(benchmark::State &state)
{
    std::unique_ptr<ColumnListView> view = MakeView();
    view->AddList(MakeRows(1000000, 5));
    view->show();
    view->ScrollTo(500000);
    LayOut(*view);
    for (auto _ : state)
        benchmark::DoNotOptimize(view->viewport()->grab());
}
BENCHMARK(PaintTheMiddleOfAMillion)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
