#include "panes/DirView.h"

#include "panes/DirListItem.h"
#include "panes/DirRowPainter.h"
#include "panes/EditControl.h"
#include "panes/PaneCommands.h"
#include "panes/PaneDragDrop.h"
#include "panes/PaneKeys.h"
#include "panes/PaneMessages.h"
#include "panes/PanePopUp.h"
#include "widgets/RgbColor.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>
#include <algorithm>

namespace kestrin {

DirView::DirView(QWidget *parent,
                 const std::string &path,
                 const QString &iconLabel,
                 platform::Handler *owner)
    : ColumnListView(parent, false)
    , fModel(ListModel(), *this, path, owner)
    , fCommands(std::make_unique<PaneCommands>(fModel, *this))
    , fKeys(std::make_unique<PaneKeys>(*this, fModel, *fCommands))
    , fDragDrop(std::make_unique<PaneDragDrop>(*this, fModel))
{
    SetColumnLabel(kColumnIcon, iconLabel);
    for (const auto &[column, width] : {std::pair{kColumnIcon, 20},
                                        {kColumnName, 108},
                                        {kColumnSize, 70},
                                        {kColumnDate, 145},
                                        {kColumnPermissions, 100}})
        SetColumnWidth(column, float(width));
    QFont plain = font();
    plain.setPixelSize(12);
    setFont(plain);
    UseColours();
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    connect(&fModel, &PaneModel::ListingFinished, this, &DirView::ListingFinished);
    connect(&fModel, &PaneModel::Cleared, this, [this] { fRememberedIndex = -1; });
    // The rows changed: a place named by paths fits the Name column to them.
    connect(&fModel, &PaneModel::RowsListed, this, [this] { FitNameColumn(true); });
    // Whoever else sets the Name column's width (the user, or the main
    // window for every pane) sets it for paths too.
    connect(header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (column == kColumnName && !fFittingName)
            fNameWidth.reset();
    });
}

DirView::~DirView() = default;

void DirView::UseColours()
{
    QPalette colours = palette();
    colours.setColor(QPalette::Base, ToQColor(fModel.Settings().colors.background));
    colours.setColor(QPalette::Highlight, ToQColor(fModel.Settings().colors.selectionBar));
    setPalette(colours);
}

void DirView::ReloadSettings()
{
    fModel.ReloadSettings();
    UseColours();
}

void DirView::DrawCell(QPainter &painter,
                       const QRect &rect,
                       CLVListItem &item,
                       int row,
                       int column,
                       bool selected) const
{
    DirRowPainter::Paint(painter,
                         rect,
                         static_cast<const DirListItem &>(item),
                         column,
                         selected,
                         fModel.Settings().alternateColors && row % 2 != 0);
}

// ---- The list as the core sees it -----------------------------------------

void DirView::SelectRow(int index, bool show)
{
    Select(index);
    if (show)
        ScrollToSelection();
}

void DirView::StartRename(int index)
{
    const DirListItem *row = Row(index);
    if (row == nullptr)
        return;
    ScrollToSelection();
    const QRect frame = ItemFrame(index);
    auto *container = new QFrame(viewport());
    container->setObjectName("renamecontainer");
    container->setFrameStyle(QFrame::Box | QFrame::Plain);
    container->setGeometry(header()->sectionViewportPosition(kColumnName),
                           frame.top(),
                           header()->sectionSize(kColumnName),
                           frame.height());
    auto *layout = new QHBoxLayout(container);
    layout->setContentsMargins(1, 1, 1, 1);
    auto *field = new EditControl(QString::fromUtf8(row->Name().c_str()), index, this, container);
    layout->addWidget(field);
    container->show();
    field->selectAll();
    field->setFocus();
    fRenameContainer = container;
    fField = field;
}

EditControl *DirView::RenameField() const
{
    return fField;
}

void DirView::EndRename()
{
    if (fRenameContainer.isNull())
        return;
    const bool hadFocus = fField && fField->hasFocus();
    delete fRenameContainer.data();
    if (hadFocus)
        setFocus();
}

void DirView::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgRenameAccept:
    case kMsgRenameCancel: {
        void *field = nullptr;
        message.FindPointer("field", &field);
        if (field != nullptr && field != fField)
            break;
        int32_t row = -1;
        if (message.FindInt32("pos", &row) != B_OK || message.what != kMsgRenameAccept
            || fField.isNull()) {
            EndRename();
            break;
        }
        const std::string name = fField->text().toStdString();
        EndRename();
        setFocus();
        fCommands->AcceptRename(row, name);
        break;
    }
    default:
        break;
    }
}

// ---- Input and hooks ------------------------------------------------------

void DirView::keyPressEvent(QKeyEvent *event)
{
    if (!fKeys->Handle(event))
        ColumnListView::keyPressEvent(event);
}

bool DirView::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return ColumnListView::viewportEvent(event);
    // Names are cut at their column's edge; hovering shows a cut one whole.
    const QPoint point = static_cast<QHelpEvent *>(event)->pos();
    const DirListItem *row = Row(IndexOf(point));
    const int left = header()->sectionViewportPosition(kColumnName);
    const int width = header()->sectionSize(kColumnName);
    if (row == nullptr || point.x() < left || point.x() >= left + width
        || DirRowPainter::TextFits(*row, kColumnName, width, fontMetrics())) {
        QToolTip::hideText();
        event->ignore();
        return true;
    }
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                       QString::fromUtf8(row->Name().c_str()),
                       viewport());
    return true;
}

void DirView::mousePressEvent(QMouseEvent *event)
{
    fDragDrop->MousePress(event);
    ColumnListView::mousePressEvent(event);
}

void DirView::mouseMoveEvent(QMouseEvent *event)
{
    if (!fDragDrop->MouseMove(event))
        ColumnListView::mouseMoveEvent(event);
}

void DirView::contextMenuEvent(QContextMenuEvent *event)
{
    const int row = IndexOf(event->pos());
    if (row >= 0)
        Select(row);
    PanePopUp::Exec(*this, fModel, event->globalPos(), row >= 0, fTreeShown);
}

void DirView::dragEnterEvent(QDragEnterEvent *event)
{
    fDragDrop->DragEnter(event);
}

void DirView::dragMoveEvent(QDragMoveEvent *event)
{
    fDragDrop->DragMove(event);
}

void DirView::dropEvent(QDropEvent *event)
{
    fDragDrop->Drop(event);
}

float DirView::SavedColumnWidth(int column) const
{
    return column == kColumnName && fNameWidth ? *fNameWidth : ColumnWidth(column);
}

void DirView::FitNameColumn(bool measure)
{
    float width = ColumnWidth(kColumnName);
    if (!Source().NamesArePaths()) {
        if (!fNameWidth)
            return;
        width = *std::exchange(fNameWidth, std::nullopt);
    } else {
        if (!fNameWidth)
            fNameWidth = width;
        if (measure)
            fWidestName = WidestName();
        const int room = viewport()->width() - int(ColumnWidth(kColumnIcon));
        width = std::max(*fNameWidth, float(std::min(fWidestName, room)));
    }
    fFittingName = true;
    SetColumnWidth(kColumnName, width);
    fFittingName = false;
}

int DirView::WidestName() const
{
    // Measured are only the names longest in bytes: a query finds rows by
    // the hundred thousand, and text is measured slowly.
    constexpr size_t kMeasured = 32;
    std::vector<const DirListItem *> rows;
    for (int i = 0; i < CountItems(); i++)
        rows.push_back(Row(i));
    const auto longer = [](const DirListItem *a, const DirListItem *b) {
        return a->Name().size() > b->Name().size();
    };
    const size_t measured = std::min(kMeasured, rows.size());
    std::partial_sort(rows.begin(), rows.begin() + ptrdiff_t(measured), rows.end(), longer);
    int widest = 0;
    for (size_t i = 0; i < measured; i++)
        widest = std::max(widest, DirRowPainter::TextWidth(*rows[i], kColumnName, fontMetrics()));
    // Room after the text as before it.
    return widest + (widest > 0 ? 4 : 0);
}

void DirView::resizeEvent(QResizeEvent *event)
{
    ColumnListView::resizeEvent(event);
    if (fNameWidth)
        FitNameColumn(false);
}

void DirView::showEvent(QShowEvent *event)
{
    ColumnListView::showEvent(event);
    fModel.Attach();
}

void DirView::focusInEvent(QFocusEvent *event)
{
    emit FocusChanged(true);
    ColumnListView::focusInEvent(event);
    if (fRememberedIndex >= 0 && CountItems() > 0) {
        Select(std::min(fRememberedIndex, CountItems() - 1));
        fRememberedIndex = -1;
    }
}

void DirView::focusOutEvent(QFocusEvent *event)
{
    ColumnListView::focusOutEvent(event);
    // A menu opening, or another window taking over, leaves this list the
    // focused one of its window: commands from the menu act on it.
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    // The rename field is part of the list, and the filter's field in the
    // pane's footer as good as: the selection stays while they have the
    // focus, and follows the filtered rows.
    const QWidget *focus = QApplication::focusWidget();
    if (focus != nullptr
        && (isAncestorOf(focus)
            || (focus->objectName() == "filter" && parentWidget() != nullptr
                && parentWidget()->isAncestorOf(focus))))
        return;
    emit FocusChanged(false);
    if (CountItems() == 0)
        return;
    if (CurrentSelection() < 0 && SelectedItem() == nullptr)
        Select(0);
    fRememberedIndex = CurrentSelection();
    DeselectAll();
}

void DirView::SelectionChanged()
{
    fModel.Notify(kMsgPaneChanged);
}

void DirView::Invoked(int)
{
    fCommands->Invoke();
}

void DirView::SortChanged()
{
    if (fModel.Settings().alternateColors)
        InvalidateAll();
}

void DirView::ColumnWidthChanged(int column, float width)
{
    platform::Message message(kMsgColumnWidth);
    message.AddString("ColumnIndex", std::to_string(column));
    message.AddString("ColumnWidth", std::to_string(int(width)));
    SendToWindow(message);
}

} // namespace kestrin
