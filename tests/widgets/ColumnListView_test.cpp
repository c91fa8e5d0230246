#include "widgets/CLVPaintedItem.h"
#include "widgets/ColumnListView.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace kestrin;

namespace {

const QColor kRowColour(Qt::white);
const QColor kSelectedColour(40, 90, 200);

struct Draw
{
    int column;
    QRect rect;
    bool selected;
};

// A row that fills its cells and remembers what it was asked to draw.
class Row : public CLVPaintedItem
{
public:
    explicit Row(QString rowName, bool isFolder = false, int rowSize = 0, bool super = false)
        : CLVPaintedItem(0, super)
        , name(std::move(rowName))
        , folder(isFolder)
        , size(rowSize)
    {}

    void DrawItemColumn(QPainter &painter, const QRect &rect, int column, bool selected, bool) override
    {
        painter.fillRect(rect, selected ? kSelectedColour : kRowColour);
        draws.push_back(Draw{column, rect, selected});
        sDrawn++;
    }
    QString ColumnText(int) const override { return name; }
    char SearchByte() const override { return name.isEmpty() ? 0 : char(name[0].unicode()); }

    QString name;
    bool folder;
    int size;
    std::vector<Draw> draws;
    static inline int sDrawn = 0;
};

constexpr int kNameColumn = 0;
constexpr int kSizeColumn = 1;
constexpr int kKindColumn = 2;

// The pane's kind of compare: ".." and a folder against a file answer 0.
int CompareRows(const CLVListItem *a, const CLVListItem *b, int32_t key)
{
    const auto &left = static_cast<const Row &>(*a);
    const auto &right = static_cast<const Row &>(*b);
    if (left.name == ".." || (left.folder && !right.folder))
        return 0;
    if (key == kSizeColumn)
        return left.size - right.size;
    return QString::compare(left.name, right.name);
}

int CompareNames(const CLVListItem *a, const CLVListItem *b, int32_t)
{
    return CompareRows(a, b, kNameColumn);
}

void AddFileColumns(ColumnListView &view)
{
    view.AddColumn("Name", 120, 40, CLV_SORT_KEYABLE);
    view.AddColumn("Size", 80, 30, CLV_SORT_KEYABLE);
    view.AddColumn("Kind", 60, 20, CLV_NOT_RESIZABLE);
}

void AddRow(ColumnListView &view, const QString &name, bool folder = false, int size = 0)
{
    view.AddItem(std::make_unique<Row>(name, folder, size));
}

void AddRows(ColumnListView &view, const QString &names)
{
    for (const QString &name : names.split(' ', Qt::SkipEmptyParts))
        AddRow(view, name);
}

// A view that records its hooks.
class Probe : public ColumnListView
{
public:
    explicit Probe(bool tree = false)
        : ColumnListView(nullptr, tree)
    {
        resize(400, 300);
    }
    // With the file columns and the rows `names`, apart by blanks.
    explicit Probe(const char *names, bool tree = false)
        : Probe(tree)
    {
        AddFileColumns(*this);
        AddRows(*this, names);
    }

    int selectionChanges = 0;
    int sortChanges = 0;
    std::vector<int> invocations;
    std::vector<std::pair<int, float>> widthChanges;
    std::vector<CLVListItem *> expandRequests;
    std::function<void(CLVListItem *)> onExpand;

protected:
    void SelectionChanged() override { selectionChanges++; }
    void Invoked(int index) override { invocations.push_back(index); }
    void SortChanged() override { sortChanges++; }
    void ColumnWidthChanged(int column, float width) override
    {
        widthChanges.emplace_back(column, width);
    }
    void ExpandRequested(CLVListItem *item) override
    {
        expandRequests.push_back(item);
        if (onExpand)
            onExpand(item);
    }
};

QString Name(const CLVListItem *item)
{
    return item ? static_cast<const Row *>(item)->name : QString("(none)");
}

QString Names(const ColumnListView &view)
{
    QStringList names;
    for (int index = 0; index < view.CountItems(); index++)
        names << Name(view.ItemAt(index));
    return names.join(' ');
}

// Positions stay true after every change: IndexOf agrees with ItemAt and
// the model shows the same rows.
void ExpectConsistent(const ColumnListView &view)
{
    for (int index = 0; index < view.CountItems(); index++) {
        ASSERT_EQ(view.IndexOf(view.ItemAt(index)), index);
        ASSERT_EQ(view.model()->index(index, 0).data().toString(), Name(view.ItemAt(index)));
        ASSERT_EQ(view.SearchBytes().at(size_t(index)), view.ItemAt(index)->SearchByte());
    }
    EXPECT_EQ(view.model()->rowCount(), view.CountItems());
    EXPECT_EQ(view.SearchBytes().size(), size_t(view.CountItems()));
}

void InsertRows(ColumnListView &view, const std::vector<int> &indexes)
{
    std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows;
    for (int index : indexes)
        rows.emplace_back(index, std::make_unique<Row>(QString("new%1").arg(index)));
    view.InsertItems(std::move(rows));
}

void Show(QWidget &widget)
{
    widget.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
}

QPoint LabelCentre(const ColumnListView &view, int column)
{
    const QHeaderView *labels = view.header();
    return QPoint(labels->sectionViewportPosition(column) + labels->sectionSize(column) / 2,
                  labels->height() / 2);
}

void ClickRow(ColumnListView &view, int index)
{
    QTest::mouseClick(view.viewport(),
                      Qt::LeftButton,
                      {},
                      QPoint(5, view.ItemFrame(index).center().y()));
}

// Drags the right edge of a column's label by `dx`.
void DragDivider(ColumnListView &view, int column, int dx)
{
    QWidget *labels = view.header()->viewport();
    const int edge = view.header()->sectionViewportPosition(column)
                     + view.header()->sectionSize(column) - 1;
    const int y = view.header()->height() / 2;
    QTest::mousePress(labels, Qt::LeftButton, {}, QPoint(edge, y));
    for (int step = 1; step <= 4; step++)
        QTest::mouseMove(labels, QPoint(edge + dx * step / 4, y));
    QTest::mouseRelease(labels, Qt::LeftButton, {}, QPoint(edge + dx, y));
}

} // namespace

TEST(ColumnListView, LabelClicksSortToggleAndShowTheIndicator)
{
    Probe view("");
    AddRow(view, "..", true);
    AddRow(view, "b", true);
    AddRow(view, "d", true);
    AddRow(view, "e", false, 3);
    AddRow(view, "a", false, 9);
    AddRow(view, "c", false, 3);
    view.SetSortFunction(CompareRows);
    view.SetSortKey(kNameColumn);
    view.SetSortMode(NoSort);
    Show(view);
    EXPECT_FALSE(view.header()->isSortIndicatorShown());

    struct Click
    {
        int column;
        int key;
        CLVSortMode mode;
        const char *rows;
    };
    const Click clicks[] = {
        {kNameColumn, kNameColumn, Ascending, ".. b d a c e"}, // NoSort: the key, ascending
        {kNameColumn, kNameColumn, Descending, ".. d b e c a"},
        {kNameColumn, kNameColumn, Ascending, ".. b d a c e"},
        {kKindColumn, kNameColumn, Ascending, ".. b d a c e"}, // not sort-keyable
        {kSizeColumn, kSizeColumn, Ascending, ".. b d c e a"}, // equal sizes keep their order
        {kSizeColumn, kSizeColumn, Descending, ".. b d a c e"},
    };
    int sorts = 0;
    for (const Click &click : clicks) {
        SCOPED_TRACE(click.rows);
        QTest::mouseClick(view.header()->viewport(),
                          Qt::LeftButton,
                          {},
                          LabelCentre(view, click.column));
        if (view.ColumnFlags(click.column) & CLV_SORT_KEYABLE)
            sorts++;
        EXPECT_EQ(view.SortKey(), click.key);
        EXPECT_EQ(view.SortMode(), click.mode);
        EXPECT_EQ(Names(view), click.rows);
        EXPECT_EQ(view.sortChanges, sorts);
        EXPECT_TRUE(view.header()->isSortIndicatorShown());
        EXPECT_EQ(view.header()->sortIndicatorSection(), click.key);
        EXPECT_EQ(view.header()->sortIndicatorOrder(),
                  click.mode == Ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    }

    // NoSort hides the indicator and SortItems leaves new rows where they are.
    view.SetSortMode(NoSort);
    EXPECT_FALSE(view.header()->isSortIndicatorShown());
    AddRow(view, "0", false, 0);
    view.SortItems();
    EXPECT_EQ(Names(view), ".. b d a c e 0");
    view.SetSortMode(Ascending);
    view.SetSortFunction(nullptr);
    view.SortItems();
    EXPECT_EQ(Names(view), ".. b d a c e 0") << "no compare function, no sort";
    EXPECT_EQ(view.sortChanges, sorts) << "only clicks report a sort change";
}

TEST(ColumnListView, SortingKeepsFoldersFirstAndSortsSubRowsAmongThemselves)
{
    Probe view(true);
    view.AddColumn("", 20, 20, CLV_EXPANDER | CLV_NOT_MOVABLE | CLV_LOCK_AT_BEGINNING);
    view.AddColumn("Name", 120, 40, CLV_SORT_KEYABLE);
    view.SetSortFunction(CompareNames);
    view.SetSortKey(1);
    for (const char *name : {"..", "m", "c"})
        AddRow(view, name, true);
    for (const char *name : {"b", "z", "a"})
        AddRow(view, name);
    CLVListItem *m = view.ItemAt(1);
    for (const char *name : {"k", "q", "f"})
        view.AddUnder(std::make_unique<Row>(name, true), m);
    for (const char *name : {"e", "a"})
        view.AddUnder(std::make_unique<Row>(name), m);
    view.Select(m->SubitemAt(2)); // "f"

    struct Case
    {
        CLVSortMode mode;
        const char *top;
        const char *under;
    };
    const Case cases[] = {{Descending, ".. m c z b a", "q k f e a"},
                          {Ascending, ".. c m a b z", "f k q a e"}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.top);
        view.SetSortMode(c.mode);
        view.SortItems();
        EXPECT_EQ(Names(view), c.top);
        QStringList under;
        for (int sub = 0; sub < m->CountSubitems(); sub++)
            under << Name(m->SubitemAt(sub));
        EXPECT_EQ(under.join(' '), c.under);
        EXPECT_EQ(Name(view.SelectedItem()), "f");
        EXPECT_EQ(view.CurrentSelection(), -1) << "a sub-row has no top-level index";
        EXPECT_EQ(view.FullList().size(), 11u);
        ExpectConsistent(view);
    }
    EXPECT_EQ(view.selectionChanges, 1);
}

TEST(ColumnListView, SelectionStaysOnItsRowAcrossSortsInsertsAndRemoves)
{
    Probe view("a b c d e f g h i j k l m n o p q r s t");
    view.SetSortFunction(CompareRows);
    Show(view);
    ClickRow(view, 7);
    CLVListItem *h = view.ItemAt(7);
    ASSERT_EQ(view.SelectedItem(), h);
    ASSERT_EQ(view.selectionChanges, 1);

    struct Step
    {
        const char *what;
        bool insert; // else remove; neither with no indexes: sort
        std::vector<int> indexes;
    };
    const Step steps[] = {
        {"sort descending", false, {}},
        {"insert at two places", true, {0, 3, 3, 15}},
        {"insert at many places", true, {1, 4, 6, 9, 12, 14, 20, 22}},
        {"remove two runs", false, {0, 1, 2, 25}},
        {"remove many places", false, {20, 2, 5, 7, 9, 11, 14}},
    };
    view.SetSortMode(Descending);
    for (const Step &step : steps) {
        SCOPED_TRACE(step.what);
        std::vector<int> indexes = step.indexes;
        if (step.insert) {
            InsertRows(view, indexes);
        } else if (!indexes.empty()) {
            std::erase(indexes, view.IndexOf(h)); // not the selected row itself
            view.RemoveItems(indexes);
        } else {
            view.SortItems();
        }
        EXPECT_EQ(view.SelectedItem(), h);
        EXPECT_EQ(view.CurrentSelection(), view.IndexOf(h));
        EXPECT_EQ(view.selectionChanges, 1);
        ExpectConsistent(view);
    }

    // The selected row leaving takes the selection with it, with no
    // neighbour selected instead, whichever way the rows go.
    view.RemoveItems({view.IndexOf(h), 0, 2, 4, 6, 8});
    EXPECT_EQ(view.SelectedItem(), nullptr);
    EXPECT_EQ(view.CurrentSelection(), -1);
    EXPECT_EQ(view.selectionChanges, 2);
    view.Select(3);
    std::unique_ptr<CLVListItem> removed = view.RemoveItem(3);
    EXPECT_EQ(view.SelectedItem(), nullptr);
    EXPECT_EQ(view.selectionChanges, 4);
    ExpectConsistent(view);
}

TEST(ColumnListView, InsertItemsGoesBeforeTheRowThatHadTheIndex)
{
    struct Case
    {
        std::vector<std::pair<int, const char *>> rows;
        const char *expected;
    };
    const Case cases[] = {
        {{{2, "x"}, {2, "y"}}, "A B x y C D E"},
        {{{5, "x"}, {0, "y"}, {5, "z"}}, "y A B C D E x z"},
        {{{3, "x"}, {1, "y"}, {3, "z"}, {1, "w"}}, "A y w B C x z D E"},
        {{{-3, "x"}, {99, "y"}}, "x A B C D E y"},
        // More places than the few-ranges path takes.
        {{{4, "p"}, {0, "q"}, {2, "r"}, {1, "s"}, {3, "t"}, {5, "u"}, {2, "v"}},
         "q A s B r v C t D p E u"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.expected);
        Probe view("A B C D E");
        ASSERT_EQ(view.IndexOf(view.ItemAt(4)), 4);
        std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows;
        for (const auto &[index, name] : c.rows)
            rows.emplace_back(index, std::make_unique<Row>(name));
        view.InsertItems(std::move(rows));
        EXPECT_EQ(Names(view), c.expected);
        ExpectConsistent(view);
    }

    Probe view("A B");
    view.AddItem(std::make_unique<Row>("x"), 1);
    view.AddItem(std::make_unique<Row>("y"), 0);
    EXPECT_EQ(Names(view), "y A x B");
    ExpectConsistent(view);
}

TEST(ColumnListView, RemoveItemsHandsRowsBackInIndexOrder)
{
    struct Case
    {
        std::vector<int> indexes;
        const char *removed;
        const char *left;
    };
    const Case cases[] = {
        {{7, 2, 3}, "C D H", "A B E F G I J"},
        {{9, 0, 4, 2, 6, 8}, "A C E G I J", "B D F H"}, // many separate places
        {{5, 99, -1}, "F", "A B C D E G H I J"},
        {{}, "", "A B C D E F G H I J"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.removed);
        Probe view("A B C D E F G H I J");
        std::vector<std::unique_ptr<CLVListItem>> removed = view.RemoveItems(c.indexes);
        QStringList names;
        for (const auto &row : removed) {
            names << Name(row.get());
            EXPECT_EQ(view.IndexOf(row.get()), -1);
        }
        EXPECT_EQ(names.join(' '), c.removed);
        EXPECT_EQ(Names(view), c.left);
        ExpectConsistent(view);
    }
}

TEST(ColumnListView, TheTopRowStaysInPlaceWhileRowsComeAndGoAboveIt)
{
    for (bool tree : {false, true}) {
        SCOPED_TRACE(tree ? "tree" : "list");
        Probe view("", tree);
        for (int index = 0; index < 300; index++)
            AddRow(view, QString("r%1").arg(index));
        if (tree) {
            // Open sub-rows above the top make lines and rows differ.
            for (const char *name : {"x", "y", "z"})
                view.AddUnder(std::make_unique<Row>(name), view.ItemAt(40));
            view.Expand(view.ItemAt(40));
        }
        Show(view);
        view.verticalScrollBar()->setValue(100 * view.RowHeight() + 7);
        CLVListItem *top = view.ItemAt(view.IndexOf(QPoint(5, 0)));
        ASSERT_EQ(Name(top), tree ? "r97" : "r100");
        ASSERT_EQ(view.ItemFrame(view.IndexOf(top)).top(), -7);

        struct Step
        {
            const char *what;
            bool insert;              // else remove
            std::vector<int> indexes; // -1: the top row's own index
            bool inModel = false;     // changed in the model, not through the view
        };
        const Step steps[] = {
            {"one row above", true, {3}},
            {"rows at two places", true, {5, 5, 50}},
            {"rows at many places", true, {0, 10, 20, 30, 40, 60, 200, 250}},
            {"rows right before it", true, {-1}},
            {"rows below it", true, {200, 201}},
            {"removals at two places", false, {1, 2, 3, 250}},
            {"removals at many places", false, {0, 5, 9, 13, 17, 21, 200}},
            {"rows at many places in the model", true, {0, 2, 4, 6, 8, 10, -1}, true},
            {"removals at many places in the model", false, {1, 3, 5, 7, 9, 11, 13}, true},
        };
        for (const Step &step : steps) {
            SCOPED_TRACE(step.what);
            std::vector<int> indexes = step.indexes;
            std::replace(indexes.begin(), indexes.end(), -1, view.IndexOf(top));
            if (step.inModel && step.insert) {
                std::vector<std::pair<int, std::unique_ptr<CLVListItem>>> rows;
                for (int index : indexes)
                    rows.emplace_back(index, std::make_unique<Row>("new"));
                view.ListModel().InsertItems(std::move(rows));
            } else if (step.inModel) {
                view.ListModel().RemoveItems(indexes);
            } else if (!step.insert)
                view.RemoveItems(indexes);
            else if (indexes.size() == 1)
                view.AddItem(std::make_unique<Row>("new"), indexes[0]);
            else
                InsertRows(view, indexes);
            const int index = view.IndexOf(QPoint(5, 0));
            EXPECT_EQ(view.ItemAt(index), top);
            EXPECT_EQ(view.ItemFrame(index).top(), -7);
        }

        // At the very top the view stays there: rows added first show.
        view.verticalScrollBar()->setValue(0);
        view.AddItem(std::make_unique<Row>("first"), 0);
        EXPECT_EQ(view.IndexOf(QPoint(5, 0)), 0);
    }
}

TEST(ColumnListView, ColumnWidthsKeepTheirMinimumAndReportOnlyTheUser)
{
    Probe view("");
    view.AddColumn("Narrow", 10, 25, 0);
    Show(view);
    EXPECT_FLOAT_EQ(view.ColumnWidth(3), 25) << "added below its minimum";
    EXPECT_EQ(view.header()->sectionResizeMode(kKindColumn), QHeaderView::Fixed);
    EXPECT_FLOAT_EQ(view.ColumnWidth(99), -1);

    view.SetColumnWidth(kNameColumn, 10);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kNameColumn), 40);
    view.SetColumnWidth(kNameColumn, 150);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kNameColumn), 150);
    view.SetColumnWidth(99, 50);
    EXPECT_TRUE(view.widthChanges.empty()) << "the program's own widths are not reported";

    DragDivider(view, kSizeColumn, 30);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kSizeColumn), 110);
    ASSERT_FALSE(view.widthChanges.empty());
    EXPECT_EQ(view.widthChanges.back(), std::make_pair(kSizeColumn, 110.0f));

    view.widthChanges.clear();
    DragDivider(view, kNameColumn, -130);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kNameColumn), 40);
    ASSERT_FALSE(view.widthChanges.empty());
    for (const auto &[column, width] : view.widthChanges) {
        EXPECT_EQ(column, kNameColumn);
        EXPECT_GE(width, 40);
    }
    EXPECT_EQ(view.widthChanges.back().second, 40);

    view.widthChanges.clear();
    DragDivider(view, kKindColumn, 40);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kKindColumn), 60);
    EXPECT_TRUE(view.widthChanges.empty());
}

TEST(ColumnListView, NotMovableAndLockedColumnsKeepTheirPlace)
{
    Probe view;
    view.AddColumn("Icon", 20, 20, CLV_NOT_MOVABLE);
    view.AddColumn("Name", 100, 40, CLV_LOCK_AT_BEGINNING);
    view.AddColumn("Size", 60, 30, 0);
    view.AddColumn("Date", 60, 30, 0);
    view.AddColumn("Kind", 60, 30, CLV_NOT_MOVABLE);
    Show(view);

    struct Move
    {
        int from;
        int to;
        std::vector<int> order;
    };
    const std::vector<int> added{0, 1, 2, 3, 4};
    const Move moves[] = {
        {0, 3, added},           // a not-movable column
        {3, 0, added},           // before a not-movable first column
        {3, 1, added},           // before the locked column
        {1, 3, added},           // the locked column behind others
        {2, 4, added},           // shifts the not-movable last column
        {3, 2, {0, 1, 3, 2, 4}}, // among the free columns
    };
    for (const Move &move : moves) {
        SCOPED_TRACE(testing::Message() << move.from << " to " << move.to);
        view.SetDisplayOrder(added);
        // What the header does at the end of the user's drag.
        view.header()->moveSection(move.from, move.to);
        EXPECT_EQ(view.DisplayOrder(), move.order);
    }

    // The same rules for a real drag of a label.
    view.SetDisplayOrder(added);
    QWidget *labels = view.header()->viewport();
    const auto drag = [&](int column, int onto) {
        const QPoint from = LabelCentre(view, column);
        const QPoint to = LabelCentre(view, onto) - QPoint(5, 0);
        QTest::mousePress(labels, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 4; step++)
            QTest::mouseMove(labels, from + (to - from) * step / 4);
        QTest::mouseRelease(labels, Qt::LeftButton, {}, to);
    };
    drag(3, 1);
    EXPECT_EQ(view.DisplayOrder(), added);
    drag(3, 2);
    EXPECT_EQ(view.DisplayOrder(), std::vector<int>({0, 1, 3, 2, 4}));

    view.SetDisplayOrder({0, 1, 2});
    EXPECT_EQ(view.DisplayOrder(), std::vector<int>({0, 1, 3, 2, 4})) << "not a full order";
}

TEST(ColumnListView, ReturnEnterAndDoubleClickInvokeTheSelectedRow)
{
    Probe view("a b c d e f g h");
    QSignalSpy invoked(&view, &ColumnListView::invoked);
    Show(view);

    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_TRUE(view.invocations.empty()) << "nothing selected";
    ClickRow(view, 3);
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClick(&view, Qt::Key_Enter, Qt::KeypadModifier);
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_EQ(view.invocations, std::vector<int>({3, 3, 4}));

    const QPoint onRow6(view.header()->sectionViewportPosition(kSizeColumn) + 5,
                        view.ItemFrame(6).center().y());
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, onRow6);
    EXPECT_EQ(view.CurrentSelection(), 6);
    const QPoint belowTheRows(20, view.ItemFrame(7).bottom() + 30);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, belowTheRows);
    EXPECT_EQ(view.invocations, std::vector<int>({3, 3, 4, 6}));
    ASSERT_EQ(invoked.count(), 4);
    EXPECT_EQ(invoked.last().at(0).toInt(), 6);
}

TEST(ColumnListView, TreeRowsOpenThroughExpandRequestedAndInvokeSubRowsAsMinusOne)
{
    Probe view(true);
    view.AddColumn("", 20, 20, CLV_EXPANDER | CLV_NOT_MOVABLE | CLV_LOCK_AT_BEGINNING);
    view.AddColumn("Name", 120, 40, 0);
    int filled = 0;
    view.onExpand = [&view, &filled](CLVListItem *item) {
        EXPECT_FALSE(item->IsExpanded()) << "asked before the row opens";
        // Sub-rows arrive the first time a folder opens, except for "empty".
        if (item->CountSubitems() > 0 || Name(item) == "empty")
            return;
        filled++;
        view.AddUnder(std::make_unique<Row>("x", true, 0, true), item);
        view.AddUnder(std::make_unique<Row>("y"), item);
    };
    view.AddItem(std::make_unique<Row>("one", true, 0, true));
    view.AddItem(std::make_unique<Row>("file"));
    view.AddItem(std::make_unique<Row>("two", true, 0, true));
    view.AddItem(std::make_unique<Row>("empty", true, 0, true));
    CLVListItem *one = view.ItemAt(0);
    CLVListItem *two = view.ItemAt(2);
    Show(view);
    const int h = view.RowHeight();
    const auto clickExpander = [&view](int index) {
        QTest::mouseClick(view.viewport(),
                          Qt::LeftButton,
                          {},
                          QPoint(10, view.ItemFrame(index).center().y()));
    };

    clickExpander(0);
    EXPECT_EQ(view.expandRequests, std::vector<CLVListItem *>({one}));
    EXPECT_TRUE(one->IsExpanded());
    EXPECT_EQ(one->CountSubitems(), 2);
    EXPECT_EQ(view.ItemFrame(1).top(), 3 * h) << "the sub-rows show under their row";
    EXPECT_EQ(view.SelectedItem(), nullptr) << "an expander does not select";
    clickExpander(0);
    EXPECT_FALSE(one->IsExpanded());
    EXPECT_EQ(view.ItemFrame(1).top(), h);
    clickExpander(0);
    EXPECT_EQ(view.expandRequests.size(), 2u) << "asked again on every opening";
    EXPECT_EQ(filled, 1);
    EXPECT_EQ(view.ItemFrame(1).top(), 3 * h);

    clickExpander(1);
    EXPECT_EQ(Name(view.SelectedItem()), "file") << "a row without expander is clicked as usual";
    clickExpander(3);
    EXPECT_TRUE(view.ItemAt(3)->IsExpanded()) << "a super-item without sub-rows opens too";

    view.Select(two);
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_TRUE(two->IsExpanded());
    EXPECT_EQ(view.expandRequests.back(), two);
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(view.SelectedItem(), two->SubitemAt(0));
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClick(&view, Qt::Key_Left);
    EXPECT_EQ(view.SelectedItem(), two);
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_EQ(view.invocations, std::vector<int>({-1, 2}));
    QTest::keyClick(&view, Qt::Key_Left);
    EXPECT_FALSE(two->IsExpanded());

    // Closing a row whose sub-row is selected selects the row.
    view.Select(one->SubitemAt(1));
    view.Collapse(one);
    EXPECT_EQ(view.SelectedItem(), one);
    view.Expand(one);
    EXPECT_EQ(view.expandRequests.size(), 5u);
    std::vector<std::unique_ptr<CLVListItem>> subRows = view.RemoveSubitems(one);
    EXPECT_EQ(subRows.size(), 2u);
    EXPECT_EQ(subRows[0]->Superitem(), nullptr);
    EXPECT_EQ(view.FullList().size(), 6u);
}

TEST(ColumnListView, TreeCellsAreDrawnIndentedAfterTheExpanderColumn)
{
    Probe view(true);
    view.AddColumn("", 20, 20, CLV_EXPANDER);
    view.AddColumn("Name", 120, 40, 0);
    view.AddColumn("Size", 60, 30, 0);
    auto top = std::make_unique<Row>("top", true, 0, true);
    Row *topRow = top.get();
    view.AddItem(std::move(top));
    auto level1 = std::make_unique<Row>("level1", true, 0, true);
    Row *level1Row = level1.get();
    view.AddUnder(std::move(level1), topRow);
    auto level2 = std::make_unique<Row>("level2");
    Row *level2Row = level2.get();
    view.AddUnder(std::move(level2), level1Row);
    view.Expand(topRow);
    view.Expand(level1Row);
    view.Select(level1Row);
    Show(view);

    struct Case
    {
        std::vector<int> order;
        int indented;
    };
    const Case cases[] = {{{0, 1, 2}, 1}, {{0, 2, 1}, 2}, {{1, 2, 0}, -1}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.indented);
        view.SetDisplayOrder(c.order);
        for (Row *row : {topRow, level1Row, level2Row})
            row->draws.clear();
        const QImage image = view.viewport()->grab().toImage();
        for (Row *row : {topRow, level1Row, level2Row}) {
            ASSERT_EQ(row->draws.size(), 3u) << row->name.toStdString();
            const int indent = 20 * int(row->OutlineLevel());
            for (const Draw &draw : row->draws) {
                QRect cell(view.header()->sectionViewportPosition(draw.column),
                           draw.rect.top(),
                           view.header()->sectionSize(draw.column),
                           view.RowHeight());
                if (draw.column == c.indented)
                    cell.setLeft(cell.left() + indent);
                EXPECT_EQ(draw.rect, cell) << row->name.toStdString() << " column " << draw.column;
                EXPECT_EQ(draw.selected, row == level1Row);
            }
        }
        // The expander is drawn over a super-item's expander cell only.
        const QPoint expanderCentre(view.header()->sectionViewportPosition(0) + 10,
                                    view.RowHeight() / 2);
        EXPECT_NE(image.pixelColor(expanderCentre), kRowColour);
        EXPECT_EQ(image.pixelColor(expanderCentre + QPoint(0, 2 * view.RowHeight())), kRowColour);
    }
}

TEST(ColumnListView, ManyRowsCostOnlyTheVisibleOnesToPaint)
{
    Probe view("");
    std::vector<std::unique_ptr<CLVListItem>> rows;
    for (int index = 0; index < 100000; index++)
        rows.push_back(std::make_unique<Row>(QString()));
    view.AddList(std::move(rows));
    ASSERT_EQ(view.CountItems(), 100000);
    Show(view);

    view.ScrollTo(65432);
    const QRect frame = view.ItemFrame(65432);
    EXPECT_TRUE(view.viewport()->rect().contains(frame.center()));
    EXPECT_EQ(view.IndexOf(frame.center()), 65432);
    EXPECT_EQ(view.IndexOf(QPoint(390, frame.center().y())), 65432) << "right of the last column";
    Row::sDrawn = 0;
    view.viewport()->grab();
    const int visibleRows = view.viewport()->height() / view.RowHeight() + 2;
    EXPECT_GT(Row::sDrawn, 0);
    EXPECT_LE(Row::sDrawn, visibleRows * 3);

    view.SetRowHeight(10);
    EXPECT_EQ(view.RowHeight(), 20);
    view.SetRowHeight(26);
    view.ScrollTo(65432);
    const QRect taller = view.ItemFrame(65432);
    EXPECT_EQ(taller.height(), 26);
    EXPECT_TRUE(view.viewport()->rect().contains(taller.center()));
    EXPECT_EQ(view.IndexOf(taller.center()), 65432) << "Qt lays the rows out 26 high too";

    // Columns keep their widths: a wider set scrolls sideways.
    EXPECT_FALSE(view.header()->stretchLastSection());
    view.resize(800, 300);
    EXPECT_FLOAT_EQ(view.ColumnWidth(kKindColumn), 60);
    view.SetColumnWidth(kNameColumn, 900);
    QCoreApplication::processEvents();
    EXPECT_EQ(view.horizontalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    EXPECT_EQ(view.horizontalScrollBar()->maximum(),
              view.header()->length() - view.viewport()->width());
}
