#pragma once

#include "platform/RgbColor.h"

#include <QWidget>
#include <array>

class QSlider;

namespace kestrin {

// Edits one colour with a slider for each of red, green and blue; the
// colour it gives is opaque.
class ColorControl : public QWidget
{
    Q_OBJECT

public:
    explicit ColorControl(QWidget *parent = nullptr);

    // Shows `color` without announcing a change.
    void SetValue(const rgb_color &color);
    rgb_color ValueAsColor() const;

signals:
    // The user moved a slider.
    void Changed();

private:
    std::array<QSlider *, 3> fSliders{}; // children of this control
};

} // namespace kestrin
