#ifndef TESTS_VEK_CARD_FAULTY_SPI_BUS_H
#define TESTS_VEK_CARD_FAULTY_SPI_BUS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "spi_bus.h"
#include "vek.h"

/// A bus in front of another one, which notes the commands and fails where it is told to.
class FaultySpiBus final : public vek::SpiBus
{
public:
    explicit FaultySpiBus(vek::SpiBus& bus) : bus_(bus) {}

    using Command = std::pair<std::uint8_t, std::uint32_t>;  ///< Opcode; address, 0 when there is none.

    std::vector<Command> commands;          ///< Whole ones so far.
    std::optional<std::uint8_t> status;     ///< What the status register answers.
    std::optional<std::uint8_t> idBytes;    ///< What every byte of the id is.
    std::optional<std::uint8_t> capacity;   ///< The last byte of the id.
    std::optional<std::uint8_t> sfdpBytes;  ///< What every byte of the parameters is.
    std::set<std::uint8_t> lost;            ///< Opcodes that do not reach the flash.
    int stepsUntilFailure = -1;             ///< That many reads and writes from now on succeed; -1: all.

    /// The addresses of the commands with an opcode.
    std::vector<std::uint32_t> addressesOf(std::uint8_t opcode) const
    {
        std::vector<std::uint32_t> addresses;
        for (const auto& [code, address] : commands) {
            if (code == opcode) {
                addresses.push_back(address);
            }
        }
        return addresses;
    }

    void select() override
    {
        sent_.clear();
        bus_.select();
    }

    int write(std::span<const std::uint8_t> bytes) override
    {
        if (fails()) {
            return VEK_IO_ERROR;
        }
        sent_.insert(sent_.end(), bytes.begin(), bytes.end());
        return lost.count(sent_.front()) != 0 ? int{VEK_OK} : bus_.write(bytes);
    }

    int read(std::span<std::uint8_t> bytes) override
    {
        if (fails()) {
            return VEK_IO_ERROR;
        }
        const int result = bus_.read(bytes);
        const std::uint8_t opcode = sent_.front();
        for (const auto& [code, value] :
             {std::pair{0x05, status}, std::pair{0x9f, idBytes}, std::pair{0x5a, sfdpBytes}}) {
            if (opcode == code && value) {
                std::fill(bytes.begin(), bytes.end(), *value);
            }
        }
        if (opcode == 0x9f && capacity) {
            bytes.back() = *capacity;
        }
        return result;
    }

    void deselect() override
    {
        if (!sent_.empty()) {
            const std::uint32_t address =
                sent_.size() < 4 ? 0 : std::uint32_t{sent_[1]} << 16 | std::uint32_t{sent_[2]} << 8 | sent_[3];
            commands.emplace_back(sent_.front(), address);
        }
        bus_.deselect();
    }

private:
    bool fails()
    {
        if (stepsUntilFailure < 0) {
            return false;
        }
        return stepsUntilFailure-- == 0;
    }

    vek::SpiBus& bus_;
    std::vector<std::uint8_t> sent_;
};

#endif
