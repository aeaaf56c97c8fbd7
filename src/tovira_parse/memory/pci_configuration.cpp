// PCI configuration space: pci.

#include <cstdio>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

int doPCI(char* cmdText, int /*repeat*/)
{
    upperCase(cmdText);
    Tokens tokens{cmdText};
    if (tokens.word() == nullptr) {
        return kStatusDone;
    }
    const char* const typedOffset = tokens.argument();
    if (typedOffset == nullptr) {
        return kStatusBadArgument;
    }
    const std::int32_t offset = htoi32(typedOffset);
    const char* const typedValue = tokens.argument();
    if (typedValue != nullptr) {
        vekPciWrite(offset, static_cast<std::uint32_t>(htoi(typedValue)));
        return kStatusDone;
    }
    std::uint32_t value = 0;
    vekPciRead(offset, &value);
    printf("%08lx: %08x\n", static_cast<unsigned long>(static_cast<long>(offset)), value);
    return kStatusDone;
}
