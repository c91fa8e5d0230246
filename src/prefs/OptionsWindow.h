#pragma once

#include "app/PaneSettings.h"
#include "platform/Handler.h"

#include <QWidget>
#include <array>

class QCheckBox;
class QFrame;
class QPushButton;
class QRadioButton;

namespace kestrin {

class ColorControl;

// The preferences window: the date format, case-sensitive sorting, the
// progress bar, the panes' header and footer, alternating row colours and
// the four colours of the lists. "OK" writes them to the profile and tells
// the main window (614), which has every pane take them at once; the window
// stays open. "Cancel" closes it without writing.
//
// GUI thread only.
class OptionsWindow : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // The colours the radio buttons choose between, in their order.
    enum ColorKind { kBackground, kText, kSelectedText, kSelectionBar };

    // Reads the preferences and shows itself centred on `frame`; 614 goes
    // to `target`, which must outlive the window (the main window owns it).
    OptionsWindow(const QRect &frame, platform::Handler *target, QWidget *parent = nullptr);
    ~OptionsWindow() override;

    // The working copy from the profile, missing keys at their defaults.
    void GetOptions();
    // The check boxes into the working copy, and all of it to the profile.
    void SetOptions();
    const PaneSettings &Options() const { return fOptions; }

    void MessageReceived(platform::Message &message) override;

private:
    QWidget *BuildGeneralPage();
    QWidget *BuildAppearancePage();
    QCheckBox *AddCheckBox(QWidget *page, const char *label, const char *name, int y);
    void AddButton(const char *label, const char *name, uint32_t code, int x);
    rgb_color &ColorOf(int kind);
    int ChosenKind() const;
    void ShowColors();

    PaneSettings fOptions;
    platform::Handler *fTarget;
    QPushButton *fDateFormat = nullptr;
    QCheckBox *fCaseSensitive = nullptr;
    QCheckBox *fProgressBar = nullptr;
    QCheckBox *fHeader = nullptr;
    QCheckBox *fFooter = nullptr;
    QCheckBox *fAlternate = nullptr;
    std::array<QRadioButton *, 4> fKinds{};
    std::array<QFrame *, 4> fSamples{};
    ColorControl *fColorControl = nullptr;
};

} // namespace kestrin
