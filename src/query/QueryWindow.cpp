#include "query/QueryWindow.h"

#include "app/AppUtils.h"
#include "query/QueryMessages.h"
#include "query/QueryRun.h"
#include "query/QueryVolumes.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/TabbedPanel.h"
#include "widgets/WindowConventions.h"

#include <QActionGroup>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <ctime>

namespace kestrin {

namespace {

constexpr int kWidth = 440;
constexpr int kHeight = 300;
constexpr int kMargin = 10;
constexpr int kButtonWidth = 80;
constexpr int kButtonHeight = 26;
constexpr int kRow = 30;
// Often enough to look alive, seldom enough to cost nothing.
constexpr int kCountInterval = 100; // ms

} // namespace

QueryWindow::QueryWindow(const QRect &frame,
                         platform::Handler *target,
                         QWidget *parent,
                         std::string paneFolder)
    : QWidget(parent, Qt::Window)
    , fTarget(target)
{
    setWindowTitle("Query");
    PlaceOnScreen(this,
                  QRect(frame.center() - QPoint(kWidth / 2, kHeight / 2), QSize(kWidth, kHeight)));

    QTabWidget *tabs = MakeTabbedPanel(this, kWidth, kHeight, kMargin, kButtonHeight);
    // The status takes a row of its own under the tabs, whose pages have
    // room to spare.
    tabs->resize(tabs->width(), tabs->height() - StatusHeight());
    tabs->addTab(BuildGeneralPage(paneFolder), "General");
    tabs->addTab(BuildAdvancedPage(), "Advanced");
    auto *loadSave = new QWidget;
    loadSave->setObjectName("LoadSaveView");
    tabs->addTab(loadSave, "Load/Save");
    BuildButtons(tabs->parentWidget());

    fCountTimer = new QTimer(this);
    fCountTimer->setInterval(kCountInterval);
    connect(fCountTimer, &QTimer::timeout, this, [this] { ShowCount(); });
    WindowConventions::Apply(this,
                             {.firstField = fName,
                              .defaultButton = findChild<QPushButton *>("StartQuery"),
                              .cancelButton = findChild<QPushButton *>("CancelQuery")});
    show();
}

// The run's worker posts to this window: it must be gone first.
QueryWindow::~QueryWindow()
{
    fRun.reset();
    fRetired.clear();
}

void QueryWindow::BuildButtons(QWidget *container)
{
    struct Button
    {
        const char *label, *name;
        uint32_t code;
        int x;
    };
    const Button buttons[]
        = {{"Help", "Help", kMsgQueryHelp, kMargin},
           {"Cancel", "CancelQuery", kMsgCancelQuery, kWidth - 2 * (kButtonWidth + kMargin)},
           {"Query", "StartQuery", kMsgStartQuery, kWidth - kButtonWidth - kMargin}};
    for (const Button &each : buttons) {
        auto *button = new QPushButton(each.label, container);
        button->setObjectName(each.name);
        button->setAutoDefault(false);
        button->setGeometry(each.x, kHeight - kMargin - kButtonHeight, kButtonWidth, kButtonHeight);
        connect(button, &QPushButton::clicked, this, [this, code = each.code] {
            platform::Message pressed(code);
            Dispatch(pressed);
        });
    }
    // The width of the window, and two lines where that is not enough:
    // counts in the millions show whole.
    fStatus = AddLabel(container,
                       "",
                       QRect(kMargin,
                             kHeight - 2 * kMargin - kButtonHeight - StatusHeight() + kMargin / 2,
                             kWidth - 2 * kMargin,
                             StatusHeight()));
    fStatus->setObjectName("QueryStatus");
    fStatus->setWordWrap(true);
}

int QueryWindow::StatusHeight() const
{
    return 2 * fontMetrics().lineSpacing() + 2;
}

QPushButton *QueryWindow::AddMenuField(QWidget *page,
                                       const char *name,
                                       const std::vector<MenuItem> &items,
                                       int marked,
                                       const QRect &geometry)
{
    auto *field = new QPushButton(page);
    field->setObjectName(name);
    field->setGeometry(geometry);
    auto *menu = new QMenu(field);
    menu->setObjectName(name);
    auto *group = new QActionGroup(menu);
    for (size_t i = 0; i < items.size(); i++) {
        QAction *action = menu->addAction(QString::fromStdString(items[i].label));
        action->setCheckable(true);
        action->setActionGroup(group);
        action->setChecked(int(i) == marked);
        action->setEnabled(items[i].enabled);
        connect(action, &QAction::triggered, this, [this, field, item = items[i]] {
            ShowChoice(field, item.label);
            platform::Message chosen(item.code);
            if (item.volume)
                chosen.AddInt32("Volumes", *item.volume);
            if (!item.folder.empty())
                chosen.AddString("Folder", item.folder);
            Dispatch(chosen);
        });
    }
    ShowChoice(field, items[size_t(std::max(marked, 0))].label);
    field->setMenu(menu);
    return field;
}

void QueryWindow::ShowChoice(QPushButton *field, const std::string &label)
{
    // A folder's path is longer than the field: its middle goes, and the
    // whole shows as the field's tip.
    constexpr int kArrowRoom = 30;
    const QString text = QString::fromStdString(label);
    field->setText(
        field->fontMetrics().elidedText(text, Qt::ElideMiddle, field->width() - kArrowRoom));
    field->setToolTip(field->text() == text ? QString() : text);
}

QCheckBox *QueryWindow::AddCheckBox(QWidget *page,
                                    const char *label,
                                    const char *name,
                                    const QRect &geometry)
{
    auto *box = new QCheckBox(label, page);
    box->setObjectName(name);
    box->setGeometry(geometry);
    return box;
}

QLineEdit *QueryWindow::AddTextField(QWidget *page, const char *name, const QRect &geometry)
{
    auto *field = new QLineEdit(page);
    field->setObjectName(name);
    field->setGeometry(geometry);
    return field;
}

QLabel *QueryWindow::AddLabel(QWidget *page, const char *text, const QRect &geometry)
{
    auto *label = new QLabel(text, page);
    label->setGeometry(geometry);
    return label;
}

std::vector<QueryWindow::MenuItem> QueryWindow::VolumeItems(const std::string &paneFolder)
{
    std::vector<MenuItem> volumes = {{"All BFS Volumes", kMsgVolumeChosen}};
    for (const platform::Volume &volume : QueryVolumes::Local())
        volumes.push_back({volume.MountPath(), kMsgVolumeChosen, int32_t(volume.Device())});
    // Walking a whole volume to find something under one folder costs
    // minutes on a full disk; the pane's folder is usually what was meant.
    if (paneFolder.empty())
        volumes.push_back({"Focused Pane's Folder (the pane shows no local folder)",
                           kMsgFolderChosen,
                           std::nullopt,
                           {},
                           false});
    else
        volumes.push_back(
            {"Focused Pane's Folder: " + paneFolder, kMsgFolderChosen, std::nullopt, paneFolder});
    return volumes;
}

QWidget *QueryWindow::BuildGeneralPage(const std::string &paneFolder)
{
    auto *page = new QWidget;
    page->setObjectName("GeneralView");
    QLabel *nameLabel = AddLabel(page, "Name", QRect(kMargin, kMargin, 40, 24));
    // No item is marked until one is chosen; "contains" is what counts.
    AddMenuField(page,
                 "Name",
                 {{"contains", kMsgNameContains},
                  {"is not", kMsgNameIsNot},
                  {"is", kMsgNameIs},
                  {"starts with", kMsgNameStartsWith},
                  {"ends with", kMsgNameEndsWith}},
                 -1,
                 QRect(55, kMargin, 100, 24));
    fName = AddTextField(page, "Text1", QRect(160, kMargin, 240, 24));
    nameLabel->setBuddy(fName);

    const std::vector<MenuItem> volumes = VolumeItems(paneFolder);
    AddLabel(page, "Select Volume(s)", QRect(kMargin, kMargin + kRow, 110, 24))
        ->setBuddy(AddMenuField(page, "Volumes", volumes, 0, QRect(125, kMargin + kRow, 200, 24)));

    AddCheckBox(page,
                "Search Archives (ZIP,TAR,GZ)",
                "Archives",
                QRect(kMargin, kMargin + 2 * kRow, 300, 22));
    fFindText
        = AddCheckBox(page, "Find Text:", "FindText", QRect(kMargin, kMargin + 3 * kRow, 90, 22));
    fTextToFind = AddTextField(page, "TextToFind", QRect(105, kMargin + 3 * kRow, 295, 24));
    fTextToFind->setAccessibleName("Text to find");
    AddCheckBox(page, "Whole Words Only", "WholeWords", QRect(kMargin, kMargin + 4 * kRow, 140, 22));
    AddCheckBox(page, "Case Sensative", "CaseSensative", QRect(150, kMargin + 4 * kRow, 120, 22));
    AddCheckBox(page, "ASCII Charset", "ASCII", QRect(280, kMargin + 4 * kRow, 120, 22));
    return page;
}

QWidget *QueryWindow::BuildAdvancedPage()
{
    auto *page = new QWidget;
    page->setObjectName("AdvancedView");
    fDateBetween = AddCheckBox(page,
                               "Date Between",
                               "DateBetween",
                               QRect(kMargin, kMargin, 110, 22));
    const char *const names[6] = {"Date1m", "Date1d", "Date1y", "Date2m", "Date2d", "Date2y"};
    // What a screen reader says for the six small fields that have no label.
    const char *const spoken[6] = {"First date, month",
                                   "First date, day",
                                   "First date, year",
                                   "Second date, month",
                                   "Second date, day",
                                   "Second date, year"};
    const int widths[6] = {28, 28, 44, 28, 28, 44};
    int x = 125;
    for (int i = 0; i < 6; i++) {
        if (i == 3) {
            AddLabel(page, "And", QRect(x, kMargin, 28, 24));
            x += 30;
        }
        fDates[i] = AddTextField(page, names[i], QRect(x, kMargin, widths[i], 24));
        fDates[i]->setAccessibleName(spoken[i]);
        x += widths[i] + 2;
    }

    const int ageY = kMargin + kRow + 10;
    fNotOlderThan = AddCheckBox(page,
                                "Not Older Than",
                                "NotOlderThan",
                                QRect(kMargin, ageY, 120, 22));
    fAge = AddTextField(page, "TextControl", QRect(135, ageY, 60, 24));
    fAge->setAccessibleName("Not older than, number");
    AddMenuField(page,
                 "Units",
                 {{"Hours", kMsgAgeHours},
                  {"Days", kMsgAgeDays},
                  {"Weeks", kMsgAgeWeeks},
                  {"Years", kMsgAgeYears}},
                 1,
                 QRect(200, ageY, 90, 24));

    const int sizeY = ageY + kRow + 10;
    fFileSize = AddCheckBox(page, "File Size", "FileSize", QRect(kMargin, sizeY, 80, 22));
    AddMenuField(page,
                 "FileSizeOperators",
                 {{" = ", kMsgSizeEqual}, {" > ", kMsgSizeGreater}, {" < ", kMsgSizeLess}},
                 2,
                 QRect(95, sizeY, 50, 24));
    fSize = AddTextField(page, "FileSizeValue", QRect(150, sizeY, 80, 24));
    fSize->setAccessibleName("File size, number");
    AddMenuField(page,
                 "FileSizeUnits",
                 {{"Bytes", kMsgSizeBytes},
                  {"Kilobytes", kMsgSizeKilobytes},
                  {"Megabytes", kMsgSizeMegabytes}},
                 1,
                 QRect(235, sizeY, 100, 24));

    for (QCheckBox *box : {fDateBetween, fNotOlderThan}) {
        // Only the user's clicks: unchecking the other box must not echo.
        connect(box, &QCheckBox::clicked, this, [this, box] {
            platform::Message toggled(kMsgDateCheck);
            toggled.AddPointer("source", box);
            Dispatch(toggled);
        });
    }
    return page;
}

void QueryWindow::MessageReceived(platform::Message &message)
{
    const uint32_t what = message.what;
    if (what >= kMsgAgeHours && what <= kMsgAgeYears) {
        fChoices.ageUnit = what;
    } else if (what >= kMsgSizeEqual && what <= kMsgSizeLess) {
        fChoices.sizeOperator = what;
    } else if (what >= kMsgSizeBytes && what <= kMsgSizeMegabytes) {
        fChoices.sizeUnit = what;
    } else if (what >= kMsgNameContains && what <= kMsgNameEndsWith) {
        fChoices.nameOperator = what;
    } else if (what == kMsgDateCheck) {
        void *source = nullptr;
        message.FindPointer("source", &source);
        DateChecked(source);
    } else if (what == kMsgVolumeChosen) {
        int32_t device = 0;
        fVolume = message.FindInt32("Volumes", &device) == B_OK ? std::optional(device)
                                                                : std::nullopt;
        fFolder.reset();
    } else if (what == kMsgFolderChosen) {
        std::string folder;
        if (message.FindString("Folder", &folder) == B_OK)
            fFolder = folder;
        fVolume.reset();
    } else if (what == kMsgStartQuery) {
        GetResults();
    } else if (what == kMsgCancelQuery) {
        CancelQuery();
    } else if (what == kMsgQueryHelp) {
        MsgBox("Sorry no Query Help is available at this time.\nMaybe Someday...");
    } else if (what == kMsgQueryDone) {
        QueryDone();
    } else {
        Handler::MessageReceived(message);
    }
}

void QueryWindow::DateChecked(const void *source)
{
    QCheckBox *other = source == fDateBetween ? fNotOlderThan : fDateBetween;
    other->setChecked(false);
}

QueryForm QueryWindow::ReadForm() const
{
    QueryForm form = fChoices;
    form.name = fName->text().toStdString();
    form.fileSize = fFileSize->isChecked();
    form.size = fSize->text().toStdString();
    form.dateBetween = fDateBetween->isChecked();
    std::string *dates[6] = {&form.date1Month,
                             &form.date1Day,
                             &form.date1Year,
                             &form.date2Month,
                             &form.date2Day,
                             &form.date2Year};
    for (int i = 0; i < 6; i++)
        *dates[i] = fDates[i]->text().toStdString();
    form.notOlderThan = fNotOlderThan->isChecked();
    form.age = fAge->text().toStdString();
    return form;
}

void QueryWindow::GetResults()
{
    const std::string predicate = ReadForm().Predicate(time(nullptr));
    if (predicate.empty())
        return;
    QueryRun::Request request;
    request.predicate = predicate;
    if (fFindText->isChecked())
        request.textToFind = fTextToFind->text().toStdString();
    request.roots = fFolder ? std::vector<std::string>{*fFolder} : fRoots;
    if (request.roots.empty())
        for (const platform::Volume &volume : QueryVolumes::Local())
            request.roots.push_back(volume.MountPath());
    request.resultsWhat = kMsgQueryResults;

    // A newer query replaces a running one.
    if (fRun != nullptr) {
        fRun->Cancel();
        fRetired.push_back(std::move(fRun));
    }
    std::string error;
    fRun = QueryRun::Start(std::move(request), this, kMsgQueryDone, &error);
    if (fRun == nullptr) {
        MsgBox(("The query cannot be run.\n" + error).c_str());
        return;
    }
    ShowCount();
    fCountTimer->start();
}

void QueryWindow::CancelQuery()
{
    if (fRun == nullptr) {
        close();
        return;
    }
    fRun->Cancel();
    fRetired.push_back(std::move(fRun));
    fCountTimer->stop();
    fStatus->setText("Cancelled");
}

void QueryWindow::QueryDone()
{
    std::erase_if(fRetired, [](const std::unique_ptr<QueryRun> &run) { return run->IsDone(); });
    if (fRun == nullptr || !fRun->IsDone())
        return;
    ShowCount();
    fCountTimer->stop();
    platform::Message results = fRun->TakeResults();
    fRun.reset();
    fStatus->setText(fStatus->text().replace("Searching", "Done"));
    if (fTarget != nullptr)
        fTarget->Dispatch(results);
}

void QueryWindow::ShowCount()
{
    if (fRun != nullptr)
        fStatus->setText(
            QString("Searching: %1 looked at, %2 found").arg(fRun->LookedAt()).arg(fRun->Found()));
}

} // namespace kestrin
