#pragma once

#include "widgets/RgbColor.h"

#include <QWidget>
#include <string>

namespace kestrin {

// The bar above a pane's list that shows its path, raised with a bevel, in
// the focus colour while the pane is the active one. A click on it makes it
// the pane's path field (the pane connects to Clicked).
//
// GUI thread only.
class KsHeader : public QWidget
{
    Q_OBJECT

public:
    KsHeader(const std::string &text, const rgb_color &focusColor, QWidget *parent = nullptr);

    void SetText(const std::string &text);
    const std::string &Text() const { return fText; }
    // A warning shown after the text (a connection in clear); empty for none.
    void SetNote(const std::string &note);
    const std::string &Note() const { return fNote; }
    void SetSelected(bool selected);
    bool IsSelected() const { return fSelected; }
    // Sets the background colour as it is now, without changing the state.
    void SetFocusColor(const rgb_color &color);
    // The colour it takes whenever it is selected from now on.
    void SetFocusColors(const rgb_color &color);
    rgb_color Background() const { return fBackground; }

    QSize sizeHint() const override;

signals:
    void Clicked();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    std::string fText;
    std::string fNote;
    rgb_color fFocusColor;
    rgb_color fBackground;
    bool fSelected = false;
};

} // namespace kestrin
