/// Hexadecimal output: the digits themselves and the classic dump of bytes.
#ifndef TOVIRA_PARSE_HEX_DUMP_H
#define TOVIRA_PARSE_HEX_DUMP_H

#include <cstdint>

/// Writes the value in lower-case hexadecimal with at least `digits` digits (1 to 16), as "%0*lx" would, without a
/// terminator; `out` needs room for 16 characters. Returns the position behind the last digit.
char* putHex(char* out, std::uint64_t value, int digits);

/// Writes the low `2 * bytes` digits of the value (bytes 1 to 8) in lower-case hexadecimal, without a terminator.
/// Returns the position behind the last digit.
char* putFixedHex(char* out, std::uint64_t value, int bytes);

/// Prints `count` bytes, labelled as starting at `address`, in lines of 16: the address with at least eight digits, a
/// colon and a blank; each byte with two digits and a blank, padded to column 58; a tab; the bytes as characters, '.'
/// for one that is not printable. Prints nothing when count is below 1.
///
/// The byte columns begin at column 10 whatever the length of the label, so of an address of 2^32 or more the first ten
/// characters remain; on a line of one or two bytes the end of such a label still shows behind them and ends the field.
void printByte(std::uint64_t address, const std::uint8_t* bytes, int count);

#endif
