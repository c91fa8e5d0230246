#pragma once

#include "platform/Handler.h"
#include "query/QueryForm.h"

#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace kestrin {

class QueryRun;

// The query window: a form over three tabs whose criteria become one
// predicate ("Query", GetResults), run on a worker over every local disk
// volume while the window shows a running count; its results go to the main
// window as one message (601) for the focused pane. "Cancel" ends a running
// search at once and drops what it found; with nothing running it closes the
// window. The window keeps its choices between runs.
//
// GUI thread only.
class QueryWindow : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Shows itself centred on `frame`; the results go to `target`, which
    // must outlive the window (the main window owns it). `paneFolder` is the
    // local folder of the focused pane, offered in the volume menu as a
    // narrower place to walk; empty when that pane shows none.
    QueryWindow(const QRect &frame,
                platform::Handler *target,
                QWidget *parent = nullptr,
                std::string paneFolder = {});
    ~QueryWindow() override;

    // The folders a query walks instead of every local volume's root.
    void SetRoots(std::vector<std::string> roots) { fRoots = std::move(roots); }
    bool IsSearching() const { return fRun != nullptr; }
    // The remembered choices of the four menus and of the volume menu.
    const QueryForm &Choices() const { return fChoices; }
    std::optional<int32_t> ChosenVolume() const { return fVolume; }
    // The folder chosen in the volume menu, whose tree alone is walked.
    const std::optional<std::string> &ChosenFolder() const { return fFolder; }

    void MessageReceived(platform::Message &message) override;

private:
    struct MenuItem
    {
        std::string label;
        uint32_t code = 0;
        std::optional<int32_t> volume = std::nullopt; // the field "Volumes"
        std::string folder = {};                      // the field "Folder"
        bool enabled = true;
    };

    QWidget *BuildGeneralPage(const std::string &paneFolder);
    static std::vector<MenuItem> VolumeItems(const std::string &paneFolder);
    QWidget *BuildAdvancedPage();
    void BuildButtons(QWidget *container);
    QPushButton *AddMenuField(QWidget *page,
                              const char *name,
                              const std::vector<MenuItem> &items,
                              int marked,
                              const QRect &geometry);
    static void ShowChoice(QPushButton *field, const std::string &label);
    QCheckBox *AddCheckBox(QWidget *page,
                           const char *label,
                           const char *name,
                           const QRect &geometry);
    QLineEdit *AddTextField(QWidget *page, const char *name, const QRect &geometry);
    QLabel *AddLabel(QWidget *page, const char *text, const QRect &geometry);
    int StatusHeight() const;

    QueryForm ReadForm() const;
    void GetResults();
    void CancelQuery();
    void QueryDone();
    void ShowCount();
    void DateChecked(const void *source);

    platform::Handler *fTarget;
    QueryForm fChoices;
    std::optional<int32_t> fVolume;
    std::optional<std::string> fFolder;
    std::vector<std::string> fRoots;
    std::unique_ptr<QueryRun> fRun;
    // Cancelled runs whose workers are finishing their last entry.
    std::vector<std::unique_ptr<QueryRun>> fRetired;
    QTimer *fCountTimer = nullptr;

    QLineEdit *fName = nullptr;
    QCheckBox *fFindText = nullptr;
    QLineEdit *fTextToFind = nullptr;
    QCheckBox *fDateBetween = nullptr;
    QLineEdit *fDates[6] = {};
    QCheckBox *fNotOlderThan = nullptr;
    QLineEdit *fAge = nullptr;
    QCheckBox *fFileSize = nullptr;
    QLineEdit *fSize = nullptr;
    QLabel *fStatus = nullptr;
};

} // namespace kestrin
