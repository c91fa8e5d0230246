#pragma once

#include "query/QueryNode.h"

#include <optional>
#include <string>
#include <string_view>

namespace kestrin {

// Reads a predicate's text into a tree: comparisons `attribute op value`
// with op one of == != > >= < <=, the value a quoted string (backslash
// escapes any character) or a decimal number; `&&`, `||`, `!` and
// parentheses, with && binding tighter than ||. What QueryNode::Text()
// writes reads back to the same tree; looser text (blanks, fewer
// parentheses) reads too.
class PredicateParser
{
public:
    struct Result
    {
        std::optional<QueryNode> predicate;
        // Why the text is not a predicate, for an alert; empty on success.
        std::string error;
    };

    static Result Parse(std::string_view text);

private:
    explicit PredicateParser(std::string_view text)
        : fText(text)
    {}

    QueryNode ParseOr();
    QueryNode ParseAnd();
    QueryNode ParseUnary();
    QueryNode ParseComparison();
    std::string ParseAttribute();
    QueryOp ParseOperator();
    QueryValue ParseValue();
    std::string ParseString();
    QueryValue ParseNumber();

    void SkipBlanks();
    bool Take(std::string_view token);
    [[noreturn]] void Fail(const std::string &why) const;

    std::string_view fText;
    size_t fPosition = 0;
    int fDepth = 0;
};

} // namespace kestrin
