#include "query/QueryNode.h"

#include <charconv>

namespace kestrin {

namespace {

const char *OperatorText(QueryOp op)
{
    switch (op) {
    case QueryOp::NotEqual:
        return "!=";
    case QueryOp::Greater:
        return ">";
    case QueryOp::GreaterOrEqual:
        return ">=";
    case QueryOp::Less:
        return "<";
    case QueryOp::LessOrEqual:
        return "<=";
    default:
        return "==";
    }
}

std::string ValueText(const QueryValue &value)
{
    if (const auto *text = std::get_if<std::string>(&value))
        return QuotedQueryString(*text);
    if (const auto *number = std::get_if<int64_t>(&value))
        return std::to_string(*number);
    // The shortest text that reads back as the same double; always with a
    // point or an exponent, so that it reads back as a real number.
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, std::get<double>(value)).ptr;
    std::string text(buffer, end);
    if (text.find_first_of(".en") == std::string::npos)
        text += ".0";
    return text;
}

} // namespace

std::string QuotedQueryString(const std::string &text)
{
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\' || c == '\'')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

std::string QueryNode::Text() const
{
    switch (kind) {
    case Kind::Compare:
        return "(" + attribute + OperatorText(op) + ValueText(value) + ")";
    case Kind::Not:
        return "(!" + (children.empty() ? std::string() : children[0].Text()) + ")";
    case Kind::And:
    case Kind::Or: {
        const char *joint = kind == Kind::And ? "&&" : "||";
        std::string text = "(";
        for (size_t i = 0; i < children.size(); i++)
            text += (i > 0 ? joint : "") + children[i].Text();
        return text + ")";
    }
    }
    return {};
}

QueryNode QueryNode::Compare(std::string attribute, QueryOp op, QueryValue value)
{
    QueryNode node;
    node.attribute = std::move(attribute);
    node.op = op;
    node.value = std::move(value);
    return node;
}

QueryNode QueryNode::Combine(Kind kind, std::vector<QueryNode> children)
{
    QueryNode node;
    node.kind = kind;
    node.children = std::move(children);
    return node;
}

} // namespace kestrin
