/**
 * @file declared_functions.h
 * The functions that the library's public header declares.
 */
#ifndef DECLARED_FUNCTIONS_H
#define DECLARED_FUNCTIONS_H

#include <set>
#include <string>

/** @return the names of all functions declared in vek.h, read from its text. */
std::set<std::string> declaredFunctions();

#endif
