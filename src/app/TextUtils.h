#pragma once

// String helpers on plain null-terminated byte strings. Functions that return
// new strings allocate them with malloc; the caller frees them with free (or
// hands them to a MallocedString).

#include <cstdlib>
#include <memory>

namespace kestrin {

struct FreeDeleter
{
    void operator()(void *memory) const { free(memory); }
};
using MallocedString = std::unique_ptr<char, FreeDeleter>;

// A copy of `source` with every occurrence of `find` replaced, searching left to
// right and going on after each replacement (the inserted text is not searched
// again). Null when memory runs out. An empty `find` replaces nothing.
char *ReplaceAll(const char *find, const char *replace, const char *source);

// Splits a copy of `source` at any of the `delimiters` bytes, as strtok does:
// runs of delimiters count as one and there are no empty tokens. *tokens gets a
// new array of new strings (null when there is no token). Returns the count;
// 0, with nothing left allocated, when memory runs out.
int StrTokenize(const char *source, const char *delimiters, char ***tokens);
int StrTokenCount(const char *source, const char *delimiters);
void FreeTokens(char ***tokens, int count);

// True when `needle` occurs in `haystack`; without `caseSensitive`, ASCII
// letters compare in lower case.
bool InStr(const char *haystack, const char *needle, bool caseSensitive);

} // namespace kestrin
