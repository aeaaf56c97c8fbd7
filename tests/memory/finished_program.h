/**
 * @file finished_program.h
 * Runs commands with the finished program, whose library simulates the cards. Every run starts with fresh cards.
 */
#ifndef FINISHED_PROGRAM_H
#define FINISHED_PROGRAM_H

#include <cstdint>
#include <string>

namespace memory_test
{

/** The two cards of the simulation. */
enum class Card { kQz201, kQz202 };

/** Runs commands, separated by ';', on a card and expects the program to end well.
    @return what they printed, without the start-up line */
std::string runProgram(const std::string& commands, Card card = Card::kQz201);

/** Reads a double word of PCI configuration space after other commands. @param before ends with ';' if not empty */
std::uint32_t readPci(unsigned offset, Card card, const std::string& before = "");

}  // namespace memory_test

#endif
