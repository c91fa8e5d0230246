#include "prefs/OptionsWindow.h"

#include "app/AppUtils.h"
#include "prefs/ColorControl.h"
#include "prefs/PrefsMessages.h"
#include "widgets/PlaceOnScreen.h"
#include "widgets/RgbColor.h"
#include "widgets/TabbedPanel.h"
#include "widgets/WindowConventions.h"

#include <QCheckBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

namespace kestrin {

namespace {

constexpr int kWidth = 400;
constexpr int kHeight = 330;
constexpr int kMargin = 10;
constexpr int kButtonWidth = 80;
constexpr int kButtonHeight = 26;

const char *const kDateFormats[] = {"%D %T", "%a %b %d %x %Y"};

} // namespace

OptionsWindow::OptionsWindow(const QRect &frame, platform::Handler *target, QWidget *parent)
    // A dialog of the main window floats above it as a tool window would,
    // and window managers give it the focus when it opens: some never focus
    // a tool window, which the keyboard then cannot reach.
    : QWidget(parent, Qt::Dialog)
    , fTarget(target)
{
    setWindowTitle("Kestrin Preferences Dialog");
    PlaceOnScreen(this,
                  QRect(frame.center() - QPoint(kWidth / 2, kHeight / 2), QSize(kWidth, kHeight)));

    QTabWidget *tabs = MakeTabbedPanel(this, kWidth, kHeight, kMargin, kButtonHeight);
    tabs->addTab(BuildGeneralPage(), "General");
    tabs->addTab(BuildAppearancePage(), "Appearance");
    auto *advanced = new QWidget;
    advanced->setObjectName("AdvancedOptionsView");
    tabs->addTab(advanced, "Advanced");

    AddButton("Help", "Help", kMsgOptionsHelp, kMargin);
    AddButton("Cancel", "CancelOptions", B_QUIT_REQUESTED, kWidth - 2 * (kButtonWidth + kMargin));
    AddButton("OK", "SaveOptions", kMsgSaveOptions, kWidth - kButtonWidth - kMargin);

    GetOptions();
    WindowConventions::Apply(this,
                             {.firstField = fDateFormat,
                              .defaultButton = findChild<QPushButton *>("SaveOptions"),
                              .cancelButton = findChild<QPushButton *>("CancelOptions")});
    show();
}

OptionsWindow::~OptionsWindow() = default;

void OptionsWindow::AddButton(const char *label, const char *name, uint32_t code, int x)
{
    auto *button = new QPushButton(label, findChild<QWidget *>("QueryContainer"));
    button->setObjectName(name);
    button->setAutoDefault(false);
    button->setGeometry(x, kHeight - kMargin - kButtonHeight, kButtonWidth, kButtonHeight);
    connect(button, &QPushButton::clicked, this, [this, code] {
        platform::Message pressed(code);
        Dispatch(pressed);
    });
}

QCheckBox *OptionsWindow::AddCheckBox(QWidget *page, const char *label, const char *name, int y)
{
    auto *box = new QCheckBox(label, page);
    box->setObjectName(name);
    box->setGeometry(kMargin, y, 300, 22);
    return box;
}

QWidget *OptionsWindow::BuildGeneralPage()
{
    auto *page = new QWidget;
    page->setObjectName("GeneralOptionsView");
    auto *label = new QLabel("Date Format", page);
    label->setGeometry(kMargin, kMargin, 90, 24);
    fDateFormat = new QPushButton("Select Date Fomat", page);
    fDateFormat->setObjectName("DateFormat");
    fDateFormat->setGeometry(kMargin + 95, kMargin, 200, 24);
    label->setBuddy(fDateFormat);
    auto *menu = new QMenu("Select Date Fomat", fDateFormat);
    menu->setObjectName("Select Date Fomat");
    for (const char *format : kDateFormats) {
        connect(menu->addAction(format), &QAction::triggered, this, [this, format] {
            platform::Message chosen(kMsgDateFormatChosen);
            chosen.AddString("Date Format", format);
            Dispatch(chosen);
        });
    }
    fDateFormat->setMenu(menu);
    fCaseSensitive = AddCheckBox(page, "Sort Case Sensitive?", "CaseSensitiveSort", 50);
    fProgressBar = AddCheckBox(page, "Show Progress Bar?", "ShowProgressBar", 76);
    fHeader = AddCheckBox(page, "Show Header?", "ShowHeader", 102);
    fFooter = AddCheckBox(page, "Show Footer?", "ShowFooter", 128);
    return page;
}

QWidget *OptionsWindow::BuildAppearancePage()
{
    auto *page = new QWidget;
    page->setObjectName("AppearanceOptionsView");
    auto *box = new QGroupBox("Color", page);
    box->setGeometry(kMargin, 4, kWidth - 4 * kMargin, 200);
    struct Kind
    {
        const char *label;
        const char *name;
        const char *sample;
    };
    const Kind kinds[] = {{"Background", "brbBackground", "BackgroundColor"},
                          {"Text", "brbText", "TextColor"},
                          {"Selected Text", "brbSelectedText", "SelectedTextColor"},
                          {"SelectionBar", "brbSelectionBar", "SelectionBarColor"}};
    for (size_t i = 0; i < fKinds.size(); i++) {
        const int y = 22 + int(i) * 26;
        fKinds[i] = new QRadioButton(kinds[i].label, box);
        fKinds[i]->setObjectName(kinds[i].name);
        fKinds[i]->setGeometry(kMargin, y, 120, 22);
        connect(fKinds[i], &QRadioButton::toggled, this, [this](bool on) {
            if (!on)
                return;
            platform::Message changed(kMsgColorKindChanged);
            Dispatch(changed);
        });
        fSamples[i] = new QFrame(box);
        fSamples[i]->setObjectName(kinds[i].sample);
        fSamples[i]->setFrameStyle(QFrame::Box | QFrame::Plain);
        fSamples[i]->setAutoFillBackground(true);
        fSamples[i]->setGeometry(kMargin + 125, y + 2, 30, 18);
    }
    fColorControl = new ColorControl(box);
    fColorControl->setGeometry(kMargin + 170, 22, 170, 100);
    connect(fColorControl, &ColorControl::Changed, this, [this] {
        platform::Message changed(kMsgColorChanged);
        Dispatch(changed);
    });
    fKinds[kBackground]->setChecked(true);
    fAlternate = AddCheckBox(page, "Alternate Backgrounnd Colors?", "chAlternateColors", 212);
    return page;
}

rgb_color &OptionsWindow::ColorOf(int kind)
{
    switch (kind) {
    case kText:
        return fOptions.colors.text;
    case kSelectedText:
        return fOptions.colors.selectedText;
    case kSelectionBar:
        return fOptions.colors.selectionBar;
    default:
        return fOptions.colors.background;
    }
}

int OptionsWindow::ChosenKind() const
{
    for (size_t i = 0; i < fKinds.size(); i++) {
        if (fKinds[i]->isChecked())
            return int(i);
    }
    return kBackground;
}

void OptionsWindow::ShowColors()
{
    for (size_t i = 0; i < fSamples.size(); i++) {
        QPalette sample = fSamples[i]->palette();
        sample.setColor(QPalette::Window, ToQColor(ColorOf(int(i))));
        fSamples[i]->setPalette(sample);
        fSamples[i]->update();
    }
}

void OptionsWindow::GetOptions()
{
    fOptions = PaneSettings::Load();
    fCaseSensitive->setChecked(fOptions.caseSensitiveSort);
    fProgressBar->setChecked(fOptions.showProgress);
    fHeader->setChecked(fOptions.showHeader);
    fFooter->setChecked(fOptions.showFooter);
    fAlternate->setChecked(fOptions.alternateColors);
    fColorControl->SetValue(ColorOf(ChosenKind()));
    ShowColors();
}

void OptionsWindow::SetOptions()
{
    fOptions.caseSensitiveSort = fCaseSensitive->isChecked();
    fOptions.showProgress = fProgressBar->isChecked();
    fOptions.showHeader = fHeader->isChecked();
    fOptions.showFooter = fFooter->isChecked();
    fOptions.alternateColors = fAlternate->isChecked();
    fOptions.Save();
}

void OptionsWindow::MessageReceived(platform::Message &message)
{
    switch (message.what) {
    case kMsgSaveOptions:
        SetOptions();
        if (fTarget != nullptr)
            fTarget->Post(platform::Message(kMsgPreferencesChanged));
        break;
    case kMsgOptionsHelp:
        MsgBox("Help not implemented for Options Dialog.\nMaybe Someday...", B_INFO_ALERT);
        break;
    case kMsgDateFormatChosen: {
        std::string format;
        if (message.FindString("Date Format", &format) == B_OK) {
            fOptions.dateFormat = format;
            fDateFormat->setText(QString::fromStdString(format));
        }
        break;
    }
    case kMsgColorChanged:
        ColorOf(ChosenKind()) = fColorControl->ValueAsColor();
        ShowColors();
        break;
    case kMsgColorKindChanged:
        fColorControl->SetValue(ColorOf(ChosenKind()));
        break;
    case B_QUIT_REQUESTED:
        close();
        break;
    default:
        break;
    }
}

} // namespace kestrin
