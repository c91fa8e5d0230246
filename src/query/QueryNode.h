#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace kestrin {

// The operators of a predicate, as BQuery's push operations name them.
// Contains, BeginsWith and EndsWith exist only while a predicate is pushed:
// they become Equal against a string with wildcards.
enum class QueryOp {
    Equal,
    NotEqual,
    Greater,
    GreaterOrEqual,
    Less,
    LessOrEqual,
    Contains,
    BeginsWith,
    EndsWith,
    And,
    Or,
    Not
};

// A string (with `*` and `?` wildcards), an integer or a real number.
using QueryValue = std::variant<std::string, int64_t, double>;

// One node of a parsed predicate: a comparison of an attribute with a value,
// or the combination of its children. Text() writes the one form that the
// push operations write and the parser reads, so text survives a round trip.
struct QueryNode
{
    enum class Kind { Compare, And, Or, Not };

    Kind kind = Kind::Compare;
    std::string attribute;
    QueryOp op = QueryOp::Equal;
    QueryValue value;
    std::vector<QueryNode> children;

    std::string Text() const;

    static QueryNode Compare(std::string attribute, QueryOp op, QueryValue value);
    static QueryNode Combine(Kind kind, std::vector<QueryNode> children);
};

// `"` + the text with `"`, `\` and `'` escaped by a backslash + `"`.
std::string QuotedQueryString(const std::string &text);

} // namespace kestrin
