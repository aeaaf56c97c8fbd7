#ifndef VEK_DRIVERS_FEATURE_SWITCHES_H
#define VEK_DRIVERS_FEATURE_SWITCHES_H

#include <cstdint>
#include <cstdio>

#include "address_space.h"
#include "card_lock.h"
#include "vek.h"

namespace vek
{

/// The feature switches: 64 registers of 32 bits, from which the card's driver stack takes what it is to do. Only longs
/// at multiples of 4 are answered; registers and bits that are not listed read 0 and ignore writes.
///
///     0x000  functions  bits 3:0 the traces of GL, GLX, ES and EGL, bit 4 Texture
///     0x004  multi_gpu  bits 1:0 the mode of work on several GPUs: 0 none chosen, 1 combined, 2 independent,
///                       3 balance; bits 10:8 how many GPUs work independently
namespace feature_switches
{

constexpr std::uint64_t kWindowBase = 0x30'd000;  ///< Where they lie in the register region.
constexpr std::uint64_t kWindowSize = 0x100;
constexpr unsigned kRegisterWidth = 4;

constexpr std::uint64_t kFunctions = 0x000;
constexpr std::uint64_t kMultiGpu = 0x004;

constexpr std::uint32_t kTraces = 4;
constexpr std::uint32_t kTexture = 1U << kTraces;
constexpr std::uint32_t kFunctionsMask = 0x1f;

constexpr std::uint32_t kModeMask = 0x3;
constexpr std::uint32_t kModeIndependent = 2;
constexpr unsigned kGpusShift = 8;
constexpr std::uint32_t kMaxGpus = 4;  ///< As many cards as a host has at most.
constexpr std::uint32_t kMultiGpuMask = kModeMask | 0x7 << kGpusShift;

}  // namespace feature_switches

/// Runs a `func` command on the feature switches: reads its words, the first of which is the command's own, in upper or
/// lower case, switches and prints the outcome to `out`.
///
///     func                          what can be chosen
///     func 3d [name or number ...]  opens traces of the 3D driver, or prints which there are
///     func texture                  opens Texture
///     func mgpu [mode]              chooses the mode of work on several GPUs, by name or number, or prints which there
///                                   are: 1 combined, 2 independent, 3 balance; the second one takes the number of GPUs
///                                   (1 to 4, else 1)
///     func on                       what is open
///     func close                    closes everything
///
/// `lock`, of the card if it has one, is held while switches are changed.
///
/// @return VEK_BAD_ARGUMENT for a word that it does not know, which it prints as such; what stands before it is done.
int runFeatureCommand(AddressSpace& registers, const char* text, std::FILE* out, CardLock* lock = nullptr);

}  // namespace vek

#endif
