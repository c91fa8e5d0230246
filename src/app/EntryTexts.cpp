#include "app/EntryTexts.h"

namespace kestrin {

std::string EntryTexts::PermissionText(mode_t mode)
{
    static const char kLetters[] = "rwxrwxrwx";
    std::string text(9, '-');
    for (int bit = 0; bit < 9; bit++) {
        if (mode & (0400 >> bit))
            text[size_t(bit)] = kLetters[bit];
    }
    return text;
}

std::string EntryTexts::DateText(time_t time, const std::string &format)
{
    struct tm local;
    if (localtime_r(&time, &local) == nullptr)
        return {};
    char text[256];
    const size_t length = strftime(text, sizeof text, format.c_str(), &local);
    return std::string(text, length);
}

} // namespace kestrin
