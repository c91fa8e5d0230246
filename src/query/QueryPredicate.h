#pragma once

#include "query/QueryNode.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kestrin {

// Builds a predicate the way BQuery's push operations did, in reverse Polish
// order: push an attribute, push a value, push a comparison; push two
// predicates and And or Or them, or push one and Not it. The text is what
// QueryNode writes, so the parser reads it back to the same tree.
class QueryPredicate
{
public:
    void PushAttr(const std::string &name);
    // Case-sensitive, so every blank becomes the wildcard `*`.
    void PushString(const std::string &value);
    void PushInt32(int32_t value);
    void PushInt64(int64_t value);
    void PushDouble(double value);
    // A comparison takes an attribute and a value; And and Or take two
    // predicates, Not one. Operands that do not fit spoil the predicate.
    void PushOp(QueryOp op);

    // The predicate pushed so far, when the stack holds exactly one.
    std::optional<QueryNode> Predicate() const;
    // Its text, empty while there is none (GetPredicate).
    std::string Text() const;
    void Clear();

private:
    struct Attribute
    {
        std::string name;
    };
    using Item = std::variant<Attribute, QueryValue, QueryNode>;

    void PushCompare(QueryOp op);
    void PushCombination(QueryOp op);

    std::vector<Item> fStack;
    bool fSpoiled = false;
};

} // namespace kestrin
