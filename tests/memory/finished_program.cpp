#include "finished_program.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

#include "child_process.h"

namespace memory_test
{

std::string runProgram(const std::string& commands, Card card)
{
    const bool first = card == Card::kQz201;
    const auto result =
        child_process::run({.arguments = {TOVIRA_UTIL_TOOL, "--card", first ? "0" : "1", "--cmd", commands}});
    EXPECT_EQ(result.exitStatus, 0) << commands;
    EXPECT_EQ(result.error, "") << commands;
    const std::string startLine =
        std::string("enter command line with /dev/vekrw for ") + (first ? "QZ201" : "QZ202") + "!\n";
    if (!result.output.starts_with(startLine)) {
        throw std::runtime_error("unexpected start-up line: " + result.output.substr(0, 100));
    }
    return result.output.substr(startLine.size());
}

std::uint32_t readPci(unsigned offset, Card card, const std::string& before)
{
    constexpr std::size_t kDigits = 8;
    char number[kDigits + 1] = {};
    std::snprintf(number, sizeof number, "%x", offset);
    const std::string output = runProgram(before + "pci " + number, card);
    if (output.size() < kDigits + 1) {
        throw std::runtime_error("no double word in the output: " + output);
    }
    return static_cast<std::uint32_t>(std::stoul(output.substr(output.size() - kDigits - 1), nullptr, 16));
}

}  // namespace memory_test
