#include "prefs/ColorControl.h"

#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>

namespace kestrin {

ColorControl::ColorControl(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const char *names[] = {"Red", "Green", "Blue"};
    for (int i = 0; i < 3; i++) {
        auto *label = new QLabel(names[i], this);
        layout->addWidget(label, i, 0);
        auto *slider = new QSlider(Qt::Horizontal, this);
        slider->setObjectName(names[i]);
        label->setBuddy(slider);
        slider->setRange(0, 255);
        layout->addWidget(slider, i, 1);
        connect(slider, &QSlider::valueChanged, this, &ColorControl::Changed);
        fSliders[size_t(i)] = slider;
    }
}

void ColorControl::SetValue(const rgb_color &color)
{
    const uint8_t components[] = {color.red, color.green, color.blue};
    for (size_t i = 0; i < fSliders.size(); i++) {
        const QSignalBlocker quiet(fSliders[i]);
        fSliders[i]->setValue(components[i]);
    }
}

rgb_color ColorControl::ValueAsColor() const
{
    return {uint8_t(fSliders[0]->value()),
            uint8_t(fSliders[1]->value()),
            uint8_t(fSliders[2]->value()),
            255};
}

} // namespace kestrin
