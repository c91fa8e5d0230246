#include "app/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace kestrin {

namespace {

// Digits least significant first, the sign last, then the whole reversed. The
// magnitude is taken unsigned so the most negative value has one too.
template<typename Signed>
void SignedToText(Signed value, char *out)
{
    using Unsigned = std::make_unsigned_t<Signed>;
    Unsigned magnitude = value < 0 ? Unsigned(0) - Unsigned(value) : Unsigned(value);
    char *next = out;
    do {
        *next++ = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude > 0);
    if (value < 0)
        *next++ = '-';
    *next = '\0';
    reverse(out);
}

} // namespace

void itoa(int value, char *out)
{
    SignedToText(value, out);
}

void ltoa(long value, char *out)
{
    SignedToText(value, out);
}

void reverse(char *text)
{
    for (size_t i = 0, j = strlen(text); i + 1 < j; i++, j--) {
        const char c = text[i];
        text[i] = text[j - 1];
        text[j - 1] = c;
    }
}

int atoi(const char *text)
{
    unsigned int value = 0;
    for (; *text >= '0' && *text <= '9'; text++)
        value = value * 10 + unsigned(*text - '0');
    return int(value);
}

char *ftoa(float value, int decimals, char *out)
{
    if (!std::isfinite(value)) {
        strcpy(out, std::isnan(value) ? "nan" : (value < 0 ? "-inf" : "inf"));
        return out;
    }
    // The shortest fixed-point text that reads back as the same float: its
    // digits are all the float really holds.
    char digits[64];
    const auto result = std::to_chars(digits,
                                      digits + sizeof(digits) - 1,
                                      std::fabs(value),
                                      std::chars_format::fixed);
    *result.ptr = '\0';
    std::string text = digits;
    const size_t point = text.find('.');
    std::string whole = text.substr(0, point);
    std::string fraction = point == std::string::npos ? std::string() : text.substr(point + 1);
    const size_t places = decimals > 0 ? size_t(decimals) : 0;
    fraction.resize(places, '0');

    std::string formatted = (value < 0
                             && (whole != "0"
                                 || fraction.find_first_not_of('0') != std::string::npos))
                                ? "-"
                                : "";
    formatted += whole + "." + fraction;
    strcpy(out, formatted.c_str());
    return out;
}

void GetSizeString(int64_t size, char *out)
{
    if (size > (int64_t(1) << 30))
        sprintf(out, "%lld G", static_cast<long long>(size >> 30));
    else if (size > (int64_t(1) << 20))
        sprintf(out, "%lld M", static_cast<long long>(size >> 20));
    else if (size > 1024)
        sprintf(out, "%lld K", static_cast<long long>(size >> 10));
    else
        sprintf(out, "%lld Bytes", static_cast<long long>(size));
}

} // namespace kestrin
