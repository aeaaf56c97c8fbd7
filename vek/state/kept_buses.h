#ifndef VEK_STATE_KEPT_BUSES_H
#define VEK_STATE_KEPT_BUSES_H

#include "address_space.h"
#include "aux_channel.h"
#include "i2c_bus.h"
#include "spi_bus.h"
#include "state/card_keeper.h"

/// What stands before the spaces and buses of a kept card: each step is done with the card's lock held.
namespace vek
{

/// Stands before a space. Memory that the space gives away needs no lock.
class KeptSpace final : public AddressSpace
{
public:
    KeptSpace(CardKeeper& keeper, AddressSpace& space) : keeper_(keeper), space_(space) {}

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

private:
    int leave(int result);

    CardKeeper& keeper_;
    AddressSpace& space_;
};

/// Stands before a memory, which needs no lock, but whose contents may get lost.
class KeptMemory final : public BlockSpace
{
public:
    KeptMemory(CardKeeper& keeper, BlockSpace& memory) : keeper_(keeper), memory_(memory)
    {
        setPlainMemory(memory.plainMemory());
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;
    int readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count) override;
    int writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count) override;
    int fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count) override;

private:
    /// Nothing of what is kept is read or changed once a part of it is lost, which an access may bring to light.
    template <typename Access>
    int unlessLost(Access access) const
    {
        const int result = keeper_.lost() ? VEK_IO_ERROR : access();
        return keeper_.lost() ? VEK_IO_ERROR : result;
    }

    CardKeeper& keeper_;
    BlockSpace& memory_;
};

/// Stands before an I2C bus.
class KeptI2cBus final : public I2cBus
{
public:
    KeptI2cBus(CardKeeper& keeper, I2cBus& bus) : keeper_(keeper), bus_(bus) {}

    I2cStep start() override;
    I2cStep write(std::uint8_t byte) override;
    I2cByte read(bool acknowledge) override;
    void stop() override;
    I2cStep writeAll(std::span<const std::uint8_t> bytes) override;
    I2cStep readAll(std::span<std::uint8_t> bytes) override;

private:
    CardKeeper& keeper_;
    I2cBus& bus_;
};

/// Stands before an SPI bus.
class KeptSpiBus final : public SpiBus
{
public:
    KeptSpiBus(CardKeeper& keeper, SpiBus& bus) : keeper_(keeper), bus_(bus) {}

    void select() override;
    int write(std::span<const std::uint8_t> bytes) override;
    int read(std::span<std::uint8_t> bytes) override;
    void deselect() override;

private:
    CardKeeper& keeper_;
    SpiBus& bus_;
};

/// Stands before an AUX channel.
class KeptAuxChannel final : public AuxChannel
{
public:
    KeptAuxChannel(CardKeeper& keeper, AuxChannel& channel) : keeper_(keeper), channel_(channel) {}

    AuxReply transact(const AuxRequest& request) override;

private:
    CardKeeper& keeper_;
    AuxChannel& channel_;
};

}  // namespace vek

#endif
