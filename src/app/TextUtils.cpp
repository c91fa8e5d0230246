#include "app/TextUtils.h"

#include <cstring>
#include <string>

namespace kestrin {

char *ReplaceAll(const char *find, const char *replace, const char *source)
{
    const size_t findLength = strlen(find);
    std::string result;
    if (findLength == 0) {
        result = source;
    } else {
        const size_t replaceLength = strlen(replace);
        const char *rest = source;
        while (const char *hit = strstr(rest, find)) {
            result.append(rest, size_t(hit - rest));
            result.append(replace, replaceLength);
            rest = hit + findLength;
        }
        result.append(rest);
    }
    return strdup(result.c_str());
}

namespace {

// Calls `visit` for each token of a copy of `source`, as strtok splits it,
// until it answers false. False when it did, or when the copy could not be made.
template<typename Visit>
bool ForEachToken(const char *source, const char *delimiters, Visit visit)
{
    MallocedString copy(strdup(source));
    if (!copy)
        return false;
    char *state = nullptr;
    for (char *token = strtok_r(copy.get(), delimiters, &state); token;
         token = strtok_r(nullptr, delimiters, &state)) {
        if (!visit(token))
            return false;
    }
    return true;
}

void FreeAll(char **tokens, int count)
{
    for (int i = 0; i < count; i++)
        free(tokens[i]);
    free(tokens);
}

} // namespace

int StrTokenize(const char *source, const char *delimiters, char ***tokens)
{
    *tokens = nullptr;
    int count = 0;
    const bool complete = ForEachToken(source, delimiters, [&](char *token) {
        // The array grows one entry at a time: token lists are short.
        auto *grown = static_cast<char **>(realloc(*tokens, sizeof(char *) * size_t(count + 1)));
        char *tokenCopy = grown ? strdup(token) : nullptr;
        if (grown)
            *tokens = grown;
        if (!tokenCopy)
            return false;
        (*tokens)[count++] = tokenCopy;
        return true;
    });
    if (!complete) {
        FreeAll(*tokens, count);
        *tokens = nullptr;
        return 0;
    }
    return count;
}

int StrTokenCount(const char *source, const char *delimiters)
{
    int count = 0;
    ForEachToken(source, delimiters, [&](char *) {
        count++;
        return true;
    });
    return count;
}

void FreeTokens(char ***tokens, int count)
{
    if (!*tokens)
        return;
    FreeAll(*tokens, count);
    *tokens = nullptr;
}

bool InStr(const char *haystack, const char *needle, bool caseSensitive)
{
    if (caseSensitive)
        return strstr(haystack, needle) != nullptr;
    auto lower = [](const char *text) {
        std::string folded(text);
        for (char &c : folded) {
            if (c >= 'A' && c <= 'Z')
                c = char(c - 'A' + 'a');
        }
        return folded;
    };
    return lower(haystack).find(lower(needle)) != std::string::npos;
}

} // namespace kestrin
