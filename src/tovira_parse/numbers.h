/// The numbers that are typed at the console. None of these functions reports an error: bad input ends the parse.
#ifndef TOVIRA_PARSE_NUMBERS_H
#define TOVIRA_PARSE_NUMBERS_H

#include <cstdint>

/// The value of a hexadecimal text, with or without a leading "0x" or "0X". Digits of either case count up to the first
/// character that is none; of more than sixteen digits the last sixteen remain. No sign is known. An empty text gives
/// 0.
std::int64_t htoi(const char* text);

/// The value of a decimal text up to its first non-digit, modulo 2^64. Neither sign nor prefix is known: a text that
/// does not begin with a digit gives 0.
std::int64_t itoi(const char* text);

/// 1 when every character of the text may stand in a hexadecimal number (0-9, A-F, a-f and the lower-case x; not the
/// upper-case X, which tells a file name from a number in a text that was upper-cased), else 0. 1 for an empty text.
int string_is_number(const char* text);

/// The low 32 bits of a hexadecimal text as a signed number, as counts and channels are taken.
std::int32_t htoi32(const char* text);

/// The low 32 bits of a decimal text with or without a sign, up to its first non-digit: 0 without a digit. Beyond 64
/// bits the value stays at the largest or least.
std::int32_t decimal32(const char* text);

#endif
