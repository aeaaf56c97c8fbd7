/// The library's public header, taken apart for its man page and for the list of its binary interface.
#ifndef MAN_LIBRARY_HEADER_H
#define MAN_LIBRARY_HEADER_H

#include <string>
#include <string_view>

/// The conventions that the comment at the head of the file states, in man macros.
std::string manOfConventions(std::string_view header);

/// Every constant and record with its comment, in man macros.
std::string manOfTypes(std::string_view header);

/// Every function with its comment, family by family, in man macros.
std::string manOfFunctions(std::string_view header);

/// C++ statements that print the binary interface as this compiler lays it out, a line each: the constants with their
/// values, the records with the place and the size of each field, and the functions as they are declared.
std::string printersOfInterface(std::string_view header);

#endif
