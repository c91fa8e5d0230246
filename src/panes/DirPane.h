#pragma once

#include "panes/PlaceHistory.h"
#include "platform/Handler.h"
#include "widgets/RgbColor.h"

#include <QWidget>
#include <memory>
#include <string>

namespace kestrin {

class DirView;
class PaneCommands;
class PaneModel;
class PaneSource;
class StatusLog;
class KsFtr;
class KsHeader;
class KsTree;
class PathField;
class PathJump;
class SideFile;

// One pane of the main window: the header with the path, the list (and, when
// asked, the folder tree on its left), and the footer with the summary or the
// progress of a listing. It receives the list's notifications and the
// node-monitor messages of the listed folder and keeps header and footer up
// to date.
//
// GUI thread only.
class DirPane : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    DirPane(const std::string &path, const QString &iconLabel, QWidget *parent = nullptr);
    ~DirPane() override;

    DirView *List() const { return fList; }
    // The list as a widget, for what places things at it or names it as a
    // drop's target without reaching into the list itself.
    QWidget *ListWidget() const;
    // The pane's core, and the commands on it.
    PaneModel &Model() const;
    PaneCommands &Commands() const;
    KsHeader *Header() const { return fHeader; }
    KsFtr *Footer() const { return fFooter; }
    KsTree *Tree() const { return fTree; }
    // The header made editable (Ctrl+L, a click on the header); null until
    // first asked for.
    PathField *PathEdit() const { return fPathField; }

    // Header and footer show the list's place (its path, or the query) and
    // its summary.
    void SetPath();
    void SetHeaderVisible(bool visible);
    void SetFooterVisible(bool visible);

    // Opens the filter's field in the footer, with the filter's text, and
    // gives it the focus; what is typed there filters the rows at once.
    void OpenFilter();

    // The list calls this first whenever its focus changes; the header
    // shows which pane is the active one.
    void MakeFocus(bool focused);
    bool GotFocus() const;

    void GoToDir(const std::string &path);
    // Turns the header into a field with the place's path; Return goes where
    // the text leads, Escape leaves everything as it was.
    void EditPath();
    // Shows the contents of an archive, keeping the pane's folder to return
    // to; when the archive cannot be read the folder is listed again.
    void DoZip(const std::string &archive);
    // Connects the pane to the session stored in `sessionFile` ("<name>.ftp")
    // and lists its remote folder; the log view below the list shows the
    // conversation.
    void DoFtp(const std::string &sessionFile);
    // Shows the place the profile kept for the pane (a folder's path, or a
    // server's session by its name), and takes up the history kept under the
    // pane's object name.
    void Restore(const std::string &saved);
    // The places the pane showed; each place it lists joins it.
    PlaceHistory &History() { return fHistory; }
    // Shows a place of the history or the hotlist (PaneSource::RecalledPlace).
    void GoToPlace(const std::string &recalled);
    // Keeps the history under the pane's key (made of its object name) and
    // keys beginning with it in `file`.
    void SaveHistory(SideFile &file) const;
    std::string HistoryKey() const;
    // A short word to the user in the footer, until the footer has news of
    // its own: that there is nothing to go back to, say.
    void Notice(const std::string &text);
    // Back from a server to the local folder of its session, else to the
    // folder the pane stood in.
    void Disconnect();
    StatusLog *Log() const { return fLog; }
    // A pane on a server lists again once `transfer` (a copy window) is gone.
    void ListAgainAfter(QObject *transfer);
    void UseSortAndMode(int key, int mode);
    // Reads the display settings again (after the options changed).
    void ReloadSettings();
    // The folder tree on the left third of the pane (local folders only).
    void DoTree();
    void UnDoTree();

    // 607, 610, 609, 608, 500, 603 and node-monitor messages.
    void MessageReceived(platform::Message &message) override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void Layout();
    void FocusList();
    void FilterLeft(bool cleared);
    // Shows a place that has more to tell than its rows (a server's log).
    void Follow(std::unique_ptr<PaneSource> place, const std::string &select = {});
    void MakePathField();
    void EndEditPath();

    KsHeader *fHeader;
    DirView *fList;
    KsFtr *fFooter;
    StatusLog *fLog;
    KsTree *fTree = nullptr;
    PathField *fPathField = nullptr;
    PathJump *fJump = nullptr;
    QWidget *fTreeContainer = nullptr;
    bool fShowHeader = true;
    bool fShowFooter = true;
    PlaceHistory fHistory;
    // The receiver of what the place shown tells the pane (its log lines,
    // that its header changed), made anew for each place followed.
    std::unique_ptr<QObject> fFollowing;
};

} // namespace kestrin
