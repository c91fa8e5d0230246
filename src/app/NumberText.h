#pragma once

// Decimal texts as every list, footer and profile value of Kestrin shows them.
// Output buffers must hold the text and its terminator (24 bytes always do).

#include <cstdint>

namespace kestrin {

// The usual decimal form, "-42"; no padding, no grouping.
void itoa(int value, char *out);
void ltoa(long value, char *out);
void reverse(char *text);

// Kestrin's own reading of profile numbers: decimal digits from the first byte
// on, no sign, no blanks; stops at the first other byte and wraps on overflow.
// So "-5" and " 5" read as 0 and "12abc" as 12.
int atoi(const char *text);

// The integer part, ".", then `decimals` digits of the fraction, all truncated,
// never rounded. Digits past what a float holds read as zeros, so 1.15f gives
// "1.15" at two places rather than the "1.14" of its binary value.
char *ftoa(float value, int decimals, char *out);

// "512 Bytes", "3 K", "12 M", "2 G": units of 1024 with strict thresholds, so
// 1024 reads "1024 Bytes" and 1025 reads "1 K".
void GetSizeString(int64_t size, char *out);

} // namespace kestrin
