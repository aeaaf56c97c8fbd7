/// An end to the console's waits for a microcontroller that never answers.
#ifndef FUZZ_PATIENT_BOARD_H
#define FUZZ_PATIENT_BOARD_H

namespace fuzz
{

/// Begins to count anew how often the console looks for the microcontroller's answer.
void expectMailboxAnswers();

}  // namespace fuzz

#endif
