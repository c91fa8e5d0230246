#include "query/PredicateParser.h"

#include <cctype>
#include <charconv>
#include <optional>
#include <stdexcept>

namespace kestrin {

namespace {

struct ParseError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

constexpr int kMaxDepth = 200;
constexpr std::string_view kOperatorCharacters = "=!<>~&|%^+*/";

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool EndsAttribute(char c)
{
    return IsBlank(c) || c == '(' || c == ')' || c == '"'
           || kOperatorCharacters.find(c) != std::string_view::npos;
}

} // namespace

PredicateParser::Result PredicateParser::Parse(std::string_view text)
{
    PredicateParser parser(text);
    try {
        parser.SkipBlanks();
        if (parser.fPosition == text.size())
            parser.Fail("The predicate is empty.");
        QueryNode predicate = parser.ParseOr();
        parser.SkipBlanks();
        if (parser.fPosition < text.size()) {
            if (text[parser.fPosition] == ')')
                parser.Fail("Unbalanced parentheses: a \")\" without its \"(\".");
            parser.Fail("Unexpected text after the predicate.");
        }
        return {std::move(predicate), {}};
    } catch (const ParseError &error) {
        return {std::nullopt, error.what()};
    }
}

void PredicateParser::Fail(const std::string &why) const
{
    throw ParseError(why + " (at character " + std::to_string(fPosition + 1) + ")");
}

void PredicateParser::SkipBlanks()
{
    while (fPosition < fText.size() && IsBlank(fText[fPosition]))
        fPosition++;
}

bool PredicateParser::Take(std::string_view token)
{
    SkipBlanks();
    if (fText.substr(fPosition, token.size()) != token)
        return false;
    fPosition += token.size();
    return true;
}

QueryNode PredicateParser::ParseOr()
{
    QueryNode node = ParseAnd();
    while (Take("||"))
        node = QueryNode::Combine(QueryNode::Kind::Or, {std::move(node), ParseAnd()});
    return node;
}

QueryNode PredicateParser::ParseAnd()
{
    QueryNode node = ParseUnary();
    while (Take("&&"))
        node = QueryNode::Combine(QueryNode::Kind::And, {std::move(node), ParseUnary()});
    return node;
}

QueryNode PredicateParser::ParseUnary()
{
    // Deep enough for any predicate a person writes, shallow enough that a
    // hostile one cannot exhaust the stack.
    struct Nesting
    {
        int &depth;
        ~Nesting() { depth--; }
    } nesting{++fDepth};
    if (fDepth > kMaxDepth)
        Fail("The predicate is nested too deeply.");
    SkipBlanks();
    if (fText.substr(fPosition, 2) != "!=" && Take("!"))
        return QueryNode::Combine(QueryNode::Kind::Not, {ParseUnary()});
    if (Take("(")) {
        QueryNode inner = ParseOr();
        if (!Take(")"))
            Fail(fPosition >= fText.size() ? "Unbalanced parentheses: a \")\" is missing."
                                           : "Expected \"&&\", \"||\" or \")\".");
        return inner;
    }
    return ParseComparison();
}

QueryNode PredicateParser::ParseComparison()
{
    std::string attribute = ParseAttribute();
    const QueryOp op = ParseOperator();
    return QueryNode::Compare(std::move(attribute), op, ParseValue());
}

std::string PredicateParser::ParseAttribute()
{
    SkipBlanks();
    const size_t start = fPosition;
    while (fPosition < fText.size() && !EndsAttribute(fText[fPosition]))
        fPosition++;
    if (fPosition == start) {
        if (fPosition >= fText.size())
            Fail("The predicate ends where an attribute name was expected.");
        if (fText[fPosition] == ')')
            Fail("Unbalanced parentheses: a \")\" without its \"(\".");
        Fail("Expected an attribute name.");
    }
    return std::string(fText.substr(start, fPosition - start));
}

QueryOp PredicateParser::ParseOperator()
{
    SkipBlanks();
    const size_t start = fPosition;
    while (fPosition < fText.size()
           && kOperatorCharacters.find(fText[fPosition]) != std::string_view::npos)
        fPosition++;
    const std::string_view op = fText.substr(start, fPosition - start);
    static const std::pair<std::string_view, QueryOp> kOperators[] = {
        {"==", QueryOp::Equal},
        {"!=", QueryOp::NotEqual},
        {">=", QueryOp::GreaterOrEqual},
        {"<=", QueryOp::LessOrEqual},
        {">", QueryOp::Greater},
        {"<", QueryOp::Less},
    };
    for (const auto &[text, value] : kOperators)
        if (op == text)
            return value;
    fPosition = start;
    if (op.empty())
        Fail("Expected a comparison (==, !=, >, >=, <, <=) after the attribute name.");
    Fail("Unknown operator \"" + std::string(op) + "\".");
}

QueryValue PredicateParser::ParseValue()
{
    SkipBlanks();
    if (fPosition < fText.size() && fText[fPosition] == '"')
        return ParseString();
    if (fPosition < fText.size()
        && (std::isdigit(static_cast<unsigned char>(fText[fPosition])) || fText[fPosition] == '-'
            || fText[fPosition] == '+'))
        return ParseNumber();
    Fail("Expected a quoted string or a number.");
}

std::string PredicateParser::ParseString()
{
    const size_t start = fPosition++;
    std::string text;
    while (fPosition < fText.size() && fText[fPosition] != '"') {
        if (fText[fPosition] == '\\')
            fPosition++;
        if (fPosition < fText.size())
            text += fText[fPosition++];
    }
    if (fPosition >= fText.size()) {
        fPosition = start;
        Fail("A string has no closing quote.");
    }
    fPosition++;
    return text;
}

QueryValue PredicateParser::ParseNumber()
{
    const size_t start = fPosition;
    if (fText[fPosition] == '-' || fText[fPosition] == '+')
        fPosition++;
    bool real = false;
    while (fPosition < fText.size()) {
        const char c = fText[fPosition];
        const bool sign = (c == '-' || c == '+')
                          && (fText[fPosition - 1] == 'e' || fText[fPosition - 1] == 'E');
        if (c == '.' || c == 'e' || c == 'E' || sign)
            real = true;
        else if (!std::isdigit(static_cast<unsigned char>(c)))
            break;
        fPosition++;
    }
    // "12ab" is one bad number, not 12 and then a stray word.
    while (fPosition < fText.size() && std::isalnum(static_cast<unsigned char>(fText[fPosition])))
        fPosition++;
    std::string number(fText.substr(start, fPosition - start));
    const char *first = number.c_str() + (number[0] == '+' ? 1 : 0);
    const char *last = number.c_str() + number.size();
    const auto read = [&](auto value) -> std::optional<QueryValue> {
        const auto [end, error] = std::from_chars(first, last, value);
        if (error == std::errc::result_out_of_range)
            Fail("The number " + number + " is out of range.");
        if (error == std::errc() && end == last)
            return QueryValue(value);
        return std::nullopt;
    };
    if (std::optional<QueryValue> value = real ? read(0.0) : read(int64_t(0)))
        return *value;
    fPosition = start;
    Fail("\"" + number + "\" is not a number.");
}

} // namespace kestrin
