#pragma once

#include <QString>
#include <string_view>

namespace kestrin {

// The text a row of bytes shows: UTF-8 when the bytes are UTF-8, else
// Latin-1, so that any byte reads as some character and nothing is lost to
// a decoder's error. Control characters show as their pictures (a NUL as
// "␀", the controls of Latin-1 as "�"), tabs stay tabs.
class RowText
{
public:
    static QString Decode(std::string_view bytes);
    // The length in characters of Decode(bytes.substr(0, prefix)), so that
    // a byte offset can be found in the shown text.
    static qsizetype CharactersBefore(std::string_view bytes, size_t prefix);
};

} // namespace kestrin
