/**
 * @file decoded.h
 * Facts taken from the text of an EDID decoder, ours or the program edid-decode, in a form that can be compared.
 */
#ifndef DECODED_H
#define DECODED_H

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/** One direction of a timing: porches, sync, border, and the polarity 'P' or 'N', 0 when it is not stated. */
struct DecodedAxis {
    int front = 0, sync = 0, back = 0, border = 0;
    char polarity = 0;
    bool operator==(const DecodedAxis&) const = default;
};

/** A timing's line, with the two below it that a detailed timing has. */
struct DecodedTiming {
    std::string name; /**< "DMT 0x04", "VIC 16", "DTD 1", "GTF"...; empty where the decoders name it differently */
    int width = 0, height = 0;
    bool interlaced = false;
    double refreshHz = 0;
    std::string ratio;
    double horizontalKhz = 0, clockMhz = 0;
    bool reducedBlanking = false, native = false, preferred = false;
    std::string imageSize; /**< "600x340", empty when not stated */
    std::optional<DecodedAxis> horizontal, vertical;
};
std::ostream& operator<<(std::ostream& out, const DecodedTiming& timing);

/** All that was understood of a decoder's text; lines without a rule are left aside. */
struct Decoded {
    std::map<std::string, std::vector<std::string>> facts; /**< by name, in order of appearance */
    std::vector<DecodedTiming> timings;                    /**< in order of appearance */
};

/** Understands the text of edid-decode. */
Decoded decodedByReference(const std::string& text);

/** Understands our own text. */
Decoded decodedByUs(const std::string& text);

#endif
