#pragma once

#include "panes/PaneHost.h"
#include "panes/PaneModel.h"
#include "platform/Handler.h"
#include "widgets/ColumnListView.h"

#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QFrame;

namespace kestrin {

class DirListItem;
class EditControl;
class PaneCommands;
class PaneDragDrop;
class PaneKeys;

// The list of one pane: shows the rows of the pane's core (PaneModel) and
// turns input into what the core and its commands do: keys (PaneKeys), drag
// and drop (PaneDragDrop), the pop-up menu, invoking a row, the in-place
// rename field. It paints the rows (DirRowPainter), remembers the selected
// row while it does not have the focus, and tells the main window when the
// user resizes a column. What it is asked about the pane it passes on to the
// core.
//
// GUI thread only: every member belongs to it.
class DirView : public ColumnListView, public platform::Handler, public PaneHost
{
    Q_OBJECT

public:
    DirView(QWidget *parent,
            const std::string &path,
            const QString &iconLabel,
            platform::Handler *owner);
    ~DirView() override;

    PaneModel &Model() { return fModel; }
    const PaneModel &Model() const { return fModel; }
    // The commands of the keys, the menus and the rename field.
    PaneCommands &Commands() { return *fCommands; }

    void SetWindowTarget(platform::Handler *window) { fModel.SetWindowTarget(window); }
    const PaneSource &Source() const { return fModel.Source(); }
    int32_t Mode() const { return fModel.Mode(); }
    dev_t FolderDevice() const { return fModel.FolderDevice(); }
    const std::string &CurrentPath() const { return fModel.CurrentPath(); }
    const std::string &PreviousPath() const { return fModel.PreviousPath(); }
    void Show(std::unique_ptr<PaneSource> place, std::function<void()> then = nullptr)
    {
        fModel.Show(std::move(place), std::move(then));
    }
    int Populate(const std::string &path) { return fModel.Populate(path); }
    void Populate(const platform::Message &results) { fModel.Populate(results); }
    void Clear() { fModel.Clear(); }
    void Refresh() { fModel.Refresh(); }
    void GoToDir(const std::string &path) { fModel.GoToDir(path); }
    void NavigateUp() { fModel.NavigateUp(); }
    void NavigateDown() { fModel.NavigateDown(); }
    bool IsListing() const { return fModel.IsListing(); }
    int GetSelected(std::string *path) const { return fModel.GetSelected(path); }
    bool GetItemPath(std::string *path) const { return fModel.GetItemPath(path); }
    int FindItem(const std::string &name) const { return fModel.FindItem(name); }
    void SelectByName(const std::string &name) { fModel.SelectByName(name); }
    int GetSort() const { return fModel.SortKey(); }
    int GetSortMode() const { return fModel.SortMode(); }
    void SetSortMode(int key, int mode) { fModel.SetSortMode(key, mode); }
    MarkedList &Marked() { return fModel.Marked(); }
    std::string GetFiles() const { return fModel.GetFiles(); }
    void SetProgressFlag(bool show) { fModel.SetProgressFlag(show); }
    bool IsWatching() const { return fModel.IsWatching(); }
    void HandleNodeMonitor(const platform::Message &message) { fModel.HandleNodeMonitor(message); }
    DirListItem *Row(int index) const { return fModel.Row(index); }
    entry_ref RefOf(const DirListItem *row) const { return fModel.RefOf(row); }
    void SendToWindow(platform::Message &message) { fModel.SendToWindow(message); }

    // The width the profile keeps for a column: while the Name column is
    // widened for paths, the width it has for names.
    float SavedColumnWidth(int column) const;

    // Reads the display settings again: the list's colours, and the rows
    // made again when they changed.
    void ReloadSettings();
    // Whether the pane shows its folder tree (for the pop-up menu).
    void SetTreeShown(bool shown) { fTreeShown = shown; }

    // The list as the core sees it.
    int Selection() const override { return CurrentSelection(); }
    void SelectRow(int index, bool show) override;
    void StartRename(int index) override;
    void EndRename() override;
    EditControl *RenameField() const;

    // 513 and 605 from the rename field.
    void MessageReceived(platform::Message &message) override;

signals:
    // A listing has been shown (or failed); what followed it has run.
    void ListingFinished();
    // The list gained or lost the keyboard focus; the pane is told first.
    void FocusChanged(bool focused);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

    void SelectionChanged() override;
    void Invoked(int index) override;
    void SortChanged() override;
    void ColumnWidthChanged(int column, float width) override;

public:
    // Alternate rows are a shade darker: the shade follows the row's place,
    // so only the rows shown are touched.
    void DrawCell(QPainter &painter,
                  const QRect &rect,
                  CLVListItem &item,
                  int row,
                  int column,
                  bool selected) const override;

private:
    void UseColours();
    // While the place's rows are named by their paths, the Name column is
    // as wide as the longest path needs, within the pane; the width it had
    // for names comes back with names. `measure`: the rows changed.
    void FitNameColumn(bool measure);
    int WidestName() const;

    PaneModel fModel;
    std::unique_ptr<PaneCommands> fCommands;
    std::unique_ptr<PaneKeys> fKeys;
    std::unique_ptr<PaneDragDrop> fDragDrop;
    QPointer<QFrame> fRenameContainer;
    QPointer<EditControl> fField;
    bool fTreeShown = false;
    int fRememberedIndex = -1;

    // The Name column's width for names, while it is widened for paths;
    // the width the longest path needs; set while the view widens it.
    std::optional<float> fNameWidth;
    int fWidestName = 0;
    bool fFittingName = false;
};

} // namespace kestrin
