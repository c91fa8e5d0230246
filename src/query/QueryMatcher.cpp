#include "query/QueryMatcher.h"

#include "platform/Node.h"

#include <charconv>
#include <cstring>
#include <optional>

namespace kestrin {

namespace {

bool IsContinuationByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The end of the character that starts at `at`: one UTF-8 sequence, or one
// byte of a name that is not UTF-8.
size_t NextCharacter(std::string_view text, size_t at)
{
    size_t next = at + 1;
    if (static_cast<unsigned char>(text[at]) >= 0xC0)
        while (next < text.size() && IsContinuationByte(text[next]))
            next++;
    return next;
}

template<typename T>
bool Ordered(QueryOp op, const T &left, const T &right)
{
    switch (op) {
    case QueryOp::Equal:
        return left == right;
    case QueryOp::NotEqual:
        return left != right;
    case QueryOp::Greater:
        return left > right;
    case QueryOp::GreaterOrEqual:
        return left >= right;
    case QueryOp::Less:
        return left < right;
    case QueryOp::LessOrEqual:
        return left <= right;
    default:
        return false;
    }
}

bool CompareText(std::string_view text, QueryOp op, std::string_view pattern)
{
    if (op == QueryOp::Equal)
        return QueryMatcher::MatchesPattern(text, pattern);
    if (op == QueryOp::NotEqual)
        return !QueryMatcher::MatchesPattern(text, pattern);
    return Ordered(op, text, pattern);
}

std::optional<QueryValue> NumberOf(const std::string &text)
{
    int64_t whole = 0;
    const char *last = text.data() + text.size();
    if (auto [end, error] = std::from_chars(text.data(), last, whole);
        error == std::errc() && end == last)
        return whole;
    double real = 0;
    if (auto [end, error] = std::from_chars(text.data(), last, real);
        error == std::errc() && end == last)
        return real;
    return std::nullopt;
}

std::string TextOf(const QueryValue &value)
{
    if (const auto *text = std::get_if<std::string>(&value))
        return *text;
    if (const auto *whole = std::get_if<int64_t>(&value))
        return std::to_string(*whole);
    return std::to_string(std::get<double>(value));
}

bool CompareValues(const QueryValue &actual, QueryOp op, const QueryValue &wanted)
{
    const bool actualText = std::holds_alternative<std::string>(actual);
    const bool wantedText = std::holds_alternative<std::string>(wanted);
    if (actualText || wantedText) {
        // A number asked for as text, or text asked for as a number: as
        // numbers when the text is one, else as text.
        if (!actualText || !wantedText) {
            const std::optional<QueryValue> number = NumberOf(
                std::get<std::string>(actualText ? actual : wanted));
            if (number)
                return actualText ? CompareValues(*number, op, wanted)
                                  : CompareValues(actual, op, *number);
        }
        return CompareText(TextOf(actual), op, TextOf(wanted));
    }
    if (std::holds_alternative<int64_t>(actual) && std::holds_alternative<int64_t>(wanted))
        return Ordered(op, std::get<int64_t>(actual), std::get<int64_t>(wanted));
    const auto real = [](const QueryValue &value) {
        return std::holds_alternative<double>(value) ? std::get<double>(value)
                                                     : double(std::get<int64_t>(value));
    };
    return Ordered(op, real(actual), real(wanted));
}

// A little-endian integer of 1, 2, 4 or 8 bytes.
std::optional<QueryValue> IntegerOf(const std::string &data, bool isSigned)
{
    const size_t size = data.size();
    if (size != 1 && size != 2 && size != 4 && size != 8)
        return std::nullopt;
    uint64_t bits = 0;
    for (size_t i = 0; i < size; i++)
        bits |= uint64_t(static_cast<unsigned char>(data[i])) << (8 * i);
    if (isSigned && size < 8 && (bits >> (8 * size - 1)) != 0)
        bits |= ~uint64_t(0) << (8 * size);
    return int64_t(bits);
}

std::optional<QueryValue> TypedValue(type_code type, const std::string &data)
{
    switch (type) {
    case B_STRING_TYPE:
    case B_MIME_STRING_TYPE:
    case B_ASCII_TYPE:
    case B_XATTR_TYPE:
        return std::string(data.c_str());
    case B_INT8_TYPE:
    case B_INT16_TYPE:
    case B_INT32_TYPE:
    case B_INT64_TYPE:
    case B_OFF_T_TYPE:
    case B_SSIZE_T_TYPE:
    case B_TIME_TYPE:
        return IntegerOf(data, true);
    case B_UINT8_TYPE:
    case B_UINT16_TYPE:
    case B_UINT32_TYPE:
    case B_UINT64_TYPE:
    case B_SIZE_T_TYPE:
    case B_BOOL_TYPE:
        return IntegerOf(data, false);
    case B_FLOAT_TYPE:
        if (float value; data.size() == sizeof value)
            return (std::memcpy(&value, data.data(), sizeof value), double(value));
        return std::nullopt;
    case B_DOUBLE_TYPE:
        if (double value; data.size() == sizeof value)
            return (std::memcpy(&value, data.data(), sizeof value), value);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<QueryValue> AttributeOf(const std::string &name, QueryCandidate &candidate)
{
    if (name == "size" || name == "last_modified") {
        const struct stat *info = candidate.Info();
        if (info == nullptr)
            return std::nullopt;
        return int64_t(name == "size" ? info->st_size : info->st_mtime);
    }
    const platform::Node node(candidate.Path());
    attr_info info;
    if (node.GetAttrInfo(name, &info) != B_OK)
        return std::nullopt;
    std::string data(size_t(info.size), '\0');
    const ssize_t read = node.ReadAttr(name, info.type, 0, data.data(), data.size());
    if (read < 0)
        return std::nullopt;
    data.resize(size_t(read));
    return TypedValue(info.type, data);
}

} // namespace

bool QueryMatcher::MatchesPattern(std::string_view text, std::string_view pattern)
{
    // Greedy with one point of return: after a `*`, a mismatch retries the
    // rest of the pattern one character further on. Linear for the patterns
    // of a query, never exponential.
    size_t t = 0, p = 0;
    size_t starPattern = std::string_view::npos, starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starPattern = ++p;
            starText = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            t = NextCharacter(text, t);
            p++;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            t++;
            p++;
        } else if (starPattern != std::string_view::npos) {
            p = starPattern;
            t = starText = NextCharacter(text, starText);
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        p++;
    return p == pattern.size();
}

bool QueryMatcher::Matches(const QueryNode &predicate, QueryCandidate &candidate)
{
    switch (predicate.kind) {
    case QueryNode::Kind::And:
        for (const QueryNode &child : predicate.children)
            if (!Matches(child, candidate))
                return false;
        return true;
    case QueryNode::Kind::Or:
        for (const QueryNode &child : predicate.children)
            if (Matches(child, candidate))
                return true;
        return false;
    case QueryNode::Kind::Not:
        return !predicate.children.empty() && !Matches(predicate.children[0], candidate);
    case QueryNode::Kind::Compare:
        break;
    }
    if (predicate.attribute == "name") {
        // The common case, a pattern on the name, without a copy of the name.
        if (const auto *pattern = std::get_if<std::string>(&predicate.value))
            return CompareText(candidate.Name(), predicate.op, *pattern);
        return CompareValues(std::string(candidate.Name()), predicate.op, predicate.value);
    }
    const std::optional<QueryValue> actual = AttributeOf(predicate.attribute, candidate);
    return actual && CompareValues(*actual, predicate.op, predicate.value);
}

} // namespace kestrin
