/// The command language: one constant table of command rows.
#ifndef TOVIRA_PARSE_COMMAND_TABLE_H
#define TOVIRA_PARSE_COMMAND_TABLE_H

#include <span>
#include <string_view>

#include "util_cmd.h"

/// Every command, in the order of the full help list and of the dispatcher's scan.
extern const std::span<const UtilCmd> g_util_cmd;

/// Names of the rows that the full help list leaves out, compared with a row's whole name.
extern const std::span<const char* const> g_blacklist_cmd;

/// What findCmdRow returns when no further row answers to the word.
inline constexpr int kNoCmdRow = -1;

/// The first row at or behind `from` one of whose names is exactly the word (in lower case), or kNoCmdRow.
int findCmdRow(std::string_view word, int from);

/// Whether the row answers to several names.
bool hasAliases(const UtilCmd& cmd);

#endif
