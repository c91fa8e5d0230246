#pragma once

#include "platform/TypeCodes.h"

#include <string>
#include <vector>

namespace kestrin {

// What the information window lists of a node's attributes: one row per
// typed attribute and per other extended attribute, each with a text that
// says what it holds.
class AttributeText
{
public:
    struct Row
    {
        std::string name;
        std::string value;
    };

    // The rows of the node at `path` (a link's own attributes), in the
    // order the file system lists them; none when it has no attributes or
    // cannot be read.
    static std::vector<Row> Read(const std::string &path);

    // The text for one attribute: a string's value, a 32-bit integer in
    // decimal, an extended attribute's value when it is printable text
    // (else its size), and for every other type the name of its constant,
    // or the four characters of a code that has no name.
    static std::string ValueText(type_code type, const std::string &data);
    // "B_INT64_TYPE" for 'LLNG' ...; empty for a code without a name here.
    static std::string TypeName(type_code type);
    // 'ABCD' as "ABCD"; a code with bytes that do not print as 0x41424344.
    static std::string CodeText(type_code type);
};

} // namespace kestrin
