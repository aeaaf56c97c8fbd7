/** @file printed.h
 *  What the decoder prints. */
#ifndef PRINTED_H
#define PRINTED_H

#include <cstdint>
#include <span>
#include <string>

/** The text that printEdid() prints of an EDID. */
std::string printed(std::span<const std::uint8_t> edid, bool withExtensions = true);

#endif
