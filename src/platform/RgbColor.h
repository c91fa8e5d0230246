#pragma once

#include <cstdint>

// A colour as the profile stores it: red, green, blue and alpha, 0 to 255.
struct rgb_color
{
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
    uint8_t alpha = 255;

    bool operator==(const rgb_color &other) const = default;
};
