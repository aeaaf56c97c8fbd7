/// The classic dump of bytes.
#ifndef TOVIRA_PARSE_HEX_DUMP_H
#define TOVIRA_PARSE_HEX_DUMP_H

#include <cstdint>

/// Prints `count` bytes, labelled as starting at `address`, in lines of 16: the address with at least eight digits, a
/// colon and a blank; each byte with two digits and a blank, padded to column 58; a tab; the bytes as characters, '.'
/// for one that is not printable. Prints nothing when count is below 1.
///
/// The byte columns begin at column 10 whatever the length of the label, so of an address of 2^32 or more the first ten
/// characters remain; on a line of one or two bytes the end of such a label still shows behind them and ends the field.
void printByte(std::uint64_t address, const std::uint8_t* bytes, int count);

#endif
