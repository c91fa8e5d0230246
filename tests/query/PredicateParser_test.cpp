#include "query/PredicateParser.h"
#include "query/QueryPredicate.h"

#include <gtest/gtest.h>

using kestrin::PredicateParser;
using kestrin::QueryNode;
using kestrin::QueryOp;
using kestrin::QueryPredicate;

namespace {

std::string Reparsed(const std::string &text)
{
    const PredicateParser::Result result = PredicateParser::Parse(text);
    EXPECT_TRUE(result.predicate) << text << ": " << result.error;
    return result.predicate ? result.predicate->Text() : std::string();
}

std::string ErrorOf(const std::string &text)
{
    const PredicateParser::Result result = PredicateParser::Parse(text);
    EXPECT_FALSE(result.predicate) << text << " parsed as " << result.predicate->Text();
    return result.error;
}

} // namespace

TEST(QueryPredicate, PushOperationsWriteTheTextTheParserReadsBack)
{
    QueryPredicate query;
    query.PushAttr("name");
    query.PushString("foo");
    query.PushOp(QueryOp::BeginsWith);
    query.PushAttr("size");
    query.PushInt32(1024);
    query.PushOp(QueryOp::GreaterOrEqual);
    query.PushOp(QueryOp::And);
    EXPECT_EQ(query.Text(), "((name==\"foo*\")&&(size>=1024))");
    EXPECT_EQ(Reparsed(query.Text()), query.Text());

    // Blanks become wildcards; quotes, backslashes and apostrophes are escaped
    // and come back as they were.
    query.Clear();
    query.PushAttr("name");
    query.PushString("a \"b\\c' d");
    query.PushOp(QueryOp::Contains);
    query.PushAttr("META:rating");
    query.PushDouble(-2.5);
    query.PushOp(QueryOp::Less);
    query.PushOp(QueryOp::Or);
    query.PushOp(QueryOp::Not);
    EXPECT_EQ(query.Text(), R"((!((name=="*a*\"b\\c\'*d*")||(META:rating<-2.5))))");
    const auto parsed = PredicateParser::Parse(query.Text());
    ASSERT_TRUE(parsed.predicate);
    EXPECT_EQ(std::get<std::string>(parsed.predicate->children[0].children[0].value),
              "*a*\"b\\c'*d*");
    EXPECT_EQ(parsed.predicate->Text(), query.Text());

    // Ends-with, is-not, and a stack that does not make one predicate.
    query.Clear();
    query.PushAttr("name");
    query.PushString("x");
    query.PushOp(QueryOp::EndsWith);
    EXPECT_EQ(query.Text(), "(name==\"*x\")");
    query.PushAttr("size");
    EXPECT_EQ(query.Text(), "");
    query.PushOp(QueryOp::And);
    EXPECT_EQ(query.Text(), "");
}

TEST(PredicateParser, ReadsLooseTextWithPrecedence)
{
    EXPECT_EQ(Reparsed(" name == \"a\" || size>1 && size <= -5 "),
              "((name==\"a\")||((size>1)&&(size<=-5)))");
    EXPECT_EQ(Reparsed("!(name!=\"a\")&&!last_modified<3"),
              "((!(name!=\"a\"))&&(!(last_modified<3)))");
    EXPECT_EQ(Reparsed("((((size>=9223372036854775807))))"), "(size>=9223372036854775807)");
    EXPECT_EQ(Reparsed("size==1e3"), "(size==1000.0)");
}

TEST(PredicateParser, RefusesBadTextWithAReason)
{
    EXPECT_NE(ErrorOf("((name==\"a\")").find("\")\" is missing"), std::string::npos);
    EXPECT_NE(ErrorOf("(name==\"a\"))").find("without its"), std::string::npos);
    EXPECT_NE(ErrorOf("name=~\"a\"").find("Unknown operator \"=~\""), std::string::npos);
    EXPECT_NE(ErrorOf("name<>\"a\"").find("Unknown operator \"<>\""), std::string::npos);
    EXPECT_NE(ErrorOf("name==\"a\\\"").find("no closing quote"), std::string::npos);
    EXPECT_NE(ErrorOf("size>99999999999999999999").find("out of range"), std::string::npos);
    EXPECT_NE(ErrorOf("size>12ab").find("not a number"), std::string::npos);
    EXPECT_NE(ErrorOf("name==foo").find("quoted string or a number"), std::string::npos);
    EXPECT_NE(ErrorOf("   ").find("empty"), std::string::npos);
    EXPECT_NE(ErrorOf("(name==\"a\")&&").find("attribute name"), std::string::npos);
    EXPECT_NE(ErrorOf("(name==\"a\") size>1").find("Unexpected text"), std::string::npos);
    EXPECT_NE(ErrorOf(std::string(5000, '(') + "size>1" + std::string(5000, ')')).find("too deeply"),
              std::string::npos);
}
