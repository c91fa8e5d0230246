#include "query/QueryPredicate.h"

#include <algorithm>

namespace kestrin {

void QueryPredicate::PushAttr(const std::string &name)
{
    fStack.push_back(Attribute{name});
}

void QueryPredicate::PushString(const std::string &value)
{
    std::string text = value;
    std::replace(text.begin(), text.end(), ' ', '*');
    fStack.push_back(QueryValue(std::move(text)));
}

void QueryPredicate::PushInt32(int32_t value)
{
    fStack.push_back(QueryValue(int64_t(value)));
}

void QueryPredicate::PushInt64(int64_t value)
{
    fStack.push_back(QueryValue(value));
}

void QueryPredicate::PushDouble(double value)
{
    fStack.push_back(QueryValue(value));
}

void QueryPredicate::PushOp(QueryOp op)
{
    if (op == QueryOp::And || op == QueryOp::Or || op == QueryOp::Not)
        PushCombination(op);
    else
        PushCompare(op);
}

void QueryPredicate::PushCompare(QueryOp op)
{
    if (fStack.size() < 2 || !std::holds_alternative<Attribute>(fStack[fStack.size() - 2])
        || !std::holds_alternative<QueryValue>(fStack.back())) {
        fSpoiled = true;
        return;
    }
    QueryValue value = std::get<QueryValue>(fStack.back());
    fStack.pop_back();
    std::string attribute = std::get<Attribute>(fStack.back()).name;
    fStack.pop_back();

    // The pattern operators are equality against a pattern, as on BFS.
    if (op == QueryOp::Contains || op == QueryOp::BeginsWith || op == QueryOp::EndsWith) {
        auto *text = std::get_if<std::string>(&value);
        if (text == nullptr) {
            fSpoiled = true;
            return;
        }
        if (op != QueryOp::BeginsWith)
            text->insert(0, "*");
        if (op != QueryOp::EndsWith)
            *text += '*';
        op = QueryOp::Equal;
    }
    fStack.push_back(QueryNode::Compare(std::move(attribute), op, std::move(value)));
}

void QueryPredicate::PushCombination(QueryOp op)
{
    const size_t count = op == QueryOp::Not ? 1 : 2;
    if (fStack.size() < count
        || !std::all_of(fStack.end() - long(count), fStack.end(), [](const Item &item) {
               return std::holds_alternative<QueryNode>(item);
           })) {
        fSpoiled = true;
        return;
    }
    std::vector<QueryNode> children;
    for (auto it = fStack.end() - long(count); it != fStack.end(); ++it)
        children.push_back(std::move(std::get<QueryNode>(*it)));
    fStack.resize(fStack.size() - count);
    const auto kind = op == QueryOp::Not   ? QueryNode::Kind::Not
                      : op == QueryOp::And ? QueryNode::Kind::And
                                           : QueryNode::Kind::Or;
    fStack.push_back(QueryNode::Combine(kind, std::move(children)));
}

std::optional<QueryNode> QueryPredicate::Predicate() const
{
    if (fSpoiled || fStack.size() != 1 || !std::holds_alternative<QueryNode>(fStack.front()))
        return std::nullopt;
    return std::get<QueryNode>(fStack.front());
}

std::string QueryPredicate::Text() const
{
    const std::optional<QueryNode> predicate = Predicate();
    return predicate ? predicate->Text() : std::string();
}

void QueryPredicate::Clear()
{
    fStack.clear();
    fSpoiled = false;
}

} // namespace kestrin
