#pragma once

#include "platform/Handler.h"

#include <QMainWindow>
#include <string>
#include <vector>

class QMenu;

namespace kestrin {

class CopyWin;
struct TransferPlan;
class DirPane;
class DirView;
class FirstPaint;

// The one main window: the menu bar and a row of one to ten panes. It routes
// the menu commands and the panes' requests to the pane that has the focus
// (or, for copies, to the other pane), starts the copy engine's windows, runs
// add-ons, opens the Terminal, and keeps its layout in the settings profile.
//
// GUI thread only.
class KestrinWindow : public QMainWindow, public platform::Handler
{
    Q_OBJECT

public:
    KestrinWindow(const QRect &frame, const QString &title);
    ~KestrinWindow() override;

    // Adds a pane at the right end showing `place` (a folder's path, or what
    // the profile keeps for a pane); nothing when ten are there. Type 1 shows
    // the folder tree.
    void AddFilePane(const std::string &place, int type, int sort, int mode);
    DirPane *GetFocusedPane() const;
    void FocusFirst();
    // Makes `pane` the focused one: its header selected, the others not, and
    // its list given the keyboard focus.
    void FocusPane(DirPane *pane, Qt::FocusReason reason = Qt::OtherFocusReason);
    // Shows a folder in the focused pane (adding a pane when none has the
    // focus). A file shows its folder with the file selected; so does a
    // folder `asItem`.
    void SetPath(const std::string &path, bool asItem = false);
    void Default();
    void Clear();
    void RemovePane();

    void GetSettings();
    void SaveSettings();
    void GetPreferences();

    void DoNewFolder();
    void DoRename();
    void DoGetSpace();
    // An information window for each marked (or the selected) entry.
    void OpenInfoWindows(DirView *list);
    void OpenInfoWindow(const std::string &path);
    void Help(int which);
    void EmptyTrash();
    void DoAboutBox();
    // A copy, move, link, pack, unpack or delete request of a pane, by key,
    // by a drop or by a paste: true when its window started, false when
    // there was no pane to take it or the user was told why not.
    bool DoDrag(platform::Message &message);
    // Entries handed over as "refs" (started on, handed over by another
    // start or another application, dropped on a viewer); the first one is
    // left shown. The message's kRefsShow says how (see WindowMessages.h).
    void RefsReceived(const platform::Message &message);

    const std::vector<DirPane *> &Panes() const { return fPanes; }
    bool SettingsApplied() const { return fSettingsApplied; }
    // The window has been painted once, and the Add-Ons menu filled since.
    bool AddOnsLoaded() const { return fAddOnsLoaded; }

    void MessageReceived(platform::Message &message) override;

signals:
    void FirstPainted();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void CreateMenus();
    void LoadAddOns(QMenu *menu);
    void RunAddOn(const std::string &label);
    void LayoutPanes();
    void GrowBy(int units);
    void Renumber();
    void OpenInNeighbour(int offset);
    void VolumeUnmounted(dev_t device);
    DirPane *PaneOfView(const void *view) const;
    // The pane a request of the focused pane goes to: its right-hand
    // neighbour, or its left-hand one for the last pane.
    DirPane *OtherPane(const DirPane *pane) const;
    CopyWin *StartCopyWindow(const TransferPlan &plan);

    std::vector<DirPane *> fPanes;
    QWidget *fPaneRow = nullptr;
    bool fSettingsApplied = false;
    FirstPaint *fFirstPaint = nullptr; // child of fPaneRow
    bool fAddOnsLoaded = false;
};

} // namespace kestrin
