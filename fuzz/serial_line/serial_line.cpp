// Both ends of the serial line, with a line between them that does to the bytes whatever the input says: what the host
// gets is right or an error, the board does nothing twice, and what the host takes for done has been done.
// The first byte of the input tells how many of the bytes behind it choose what the host does; those that are left
// choose what becomes of the bytes on the line.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "path/access_path.h"
#include "serial/board_end.h"
#include "serial/message.h"
#include "serial/remote_buses.h"
#include "serial/remote_space.h"
#include "serial/serial_link.h"
#include "support/byte_source.h"
#include "support/require.h"
#include "vek.h"

namespace
{

constexpr int kRate = 115200;
constexpr std::uint64_t kByteNanoseconds = 86'806;
constexpr std::uint64_t kMillisecond = 1'000'000;

constexpr std::size_t kMostOperations = 24;
constexpr std::size_t kAddressesOfAnOperation = 0x800;

// What the board's memory holds; it changes with every access, as that of a queue does.
std::uint64_t contentOf(std::uint64_t address, unsigned width, unsigned accessesBefore)
{
    constexpr std::uint64_t kMixer = 0x9e37'79b9'7f4a'7c15;
    const std::uint64_t mixed = (address + 1) * kMixer + accessesBefore;
    return width == sizeof mixed ? mixed : mixed & ((std::uint64_t{1} << (8 * width)) - 1);
}

std::uint32_t longAt(std::uint64_t address)
{
    return static_cast<std::uint32_t>(contentOf(address, sizeof(std::uint32_t), 0));
}

/// Each of its addresses is accessed once. A write must bring the content of its address.
class CountingSpace final : public vek::AddressSpace
{
public:
    vek::ReadResult read(std::uint64_t address, unsigned width) override
    {
        return {VEK_OK, contentOf(address, width, accesses_.at(address)++)};
    }

    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        fuzz::require(value == contentOf(address, width, accesses_.at(address)++));
        return VEK_OK;
    }

    void expectNothingTwice() const
    {
        fuzz::require(std::all_of(accesses_.begin(), accesses_.end(), [](unsigned count) { return count <= 1; }));
    }

    bool accessed(std::uint64_t address) const { return accesses_.at(address) > 0; }

private:
    std::vector<std::uint8_t> accesses_ = std::vector<std::uint8_t>((kMostOperations + 1) * kAddressesOfAnOperation);
};

/// The transfers are numbered, and come in the order of their numbers.
class CountingSpi final : public vek::SpiBus
{
public:
    void select() override {}
    void deselect() override {}
    int read(std::span<std::uint8_t> /*bytes*/) override { return VEK_OK; }

    int write(std::span<const std::uint8_t> bytes) override
    {
        const std::uint16_t number = vek::MessageReader(bytes).take16();
        fuzz::require(number > last_);
        last_ = number;
        return VEK_OK;
    }

    std::uint16_t last() const { return last_; }

private:
    std::uint16_t last_ = 0;
};

/// The board, which may start again, or be greeted by another host in between. Not both: a board that has started again
/// begins with the first session's number again, so it would take the one host's requests for those of the other.
class Board final : public vek::ReplySink
{
public:
    explicit Board(const vek::AccessPath& card) : card_(card) { end_.emplace(card_, *this); }

    void send(std::span<const std::uint8_t> frame) override
    {
        if (!answersAnother_) {
            sent_.insert(sent_.end(), frame.begin(), frame.end());
        }
    }

    // What it answers to a byte, until the next one.
    std::span<const std::uint8_t> take(std::uint8_t byte)
    {
        sent_.clear();
        end_->take({&byte, 1});
        return sent_;
    }

    void restart()
    {
        end_.emplace(card_, *this);
        restarted_ = true;
    }

    void greetAsAnother()
    {
        if (restarted_) {
            return;
        }
        vek::MessageWriter greeting(static_cast<std::uint8_t>(vek::serial_protocol::Operation::kGreet), ++another_, 0);
        greeting.put8(vek::serial_protocol::kVersion);
        vek::FrameBuffer buffer;
        answersAnother_ = true;
        end_->take(vek::encodeFrame(greeting.bytes(), buffer));
        answersAnother_ = false;
    }

private:
    const vek::AccessPath& card_;
    std::optional<vek::BoardEnd> end_;
    std::vector<std::uint8_t> sent_;
    std::uint16_t another_ = 0;
    bool answersAnother_ = false;
    bool restarted_ = false;
};

enum class Fault : std::uint8_t {
    kDrop,
    kDropMany,
    kFlip,
    kInsert,
    kRepeat,
    kRepeatMany,
    kDelay,
    kEcho,
    kRestart,
    kAnotherHost,
};
constexpr std::uint8_t kFaults = 10;

/// The line of the host. Its time passes while the host sends or waits.
class FaultyLine final : public vek::SerialPort
{
public:
    FaultyLine(Board& board, std::span<const std::uint8_t> faults)
        : board_(board), faults_(faults), faulty_(!faults.empty()), untilFault_(faults_.take8())
    {
    }

    std::uint64_t now() override { return time_; }

    void pass(std::uint64_t nanoseconds) { time_ += nanoseconds; }

    int send(std::span<const std::uint8_t> bytes, std::uint64_t /*deadline*/) override
    {
        toBoard_.recent.clear();
        for (const std::uint8_t byte : bytes) {
            time_ += kByteNanoseconds;
            put(toBoard_, byte, time_);
        }
        return VEK_OK;
    }

    std::ptrdiff_t receive(std::span<std::uint8_t> bytes, std::uint64_t deadline) override
    {
        deliver(deadline);
        if (toHost_.bytes.empty() || toHost_.bytes.front().time > deadline) {
            time_ = std::max(time_, deadline);
            return 0;
        }
        time_ = std::max(time_, toHost_.bytes.front().time);
        std::size_t count = 0;
        while (count < bytes.size() && !toHost_.bytes.empty() && toHost_.bytes.front().time <= time_) {
            bytes[count++] = take(toHost_);
        }
        return static_cast<std::ptrdiff_t>(count);
    }

    /// Lets the board have all that is still under way.
    void runDry() { deliver(~std::uint64_t{0}); }

private:
    struct Arrival {
        std::uint64_t time;
        std::uint8_t byte;
    };

    struct Wire {
        std::deque<Arrival> bytes;
        std::vector<std::uint8_t> recent;
        std::uint64_t last = 0;
        unsigned left = 0;  ///< of a run of bytes that is lost
    };

    static std::uint8_t take(Wire& wire)
    {
        const std::uint8_t byte = wire.bytes.front().byte;
        wire.bytes.pop_front();
        return byte;
    }

    static void arrive(Wire& wire, std::uint8_t byte, std::uint64_t time)
    {
        wire.last = std::max(wire.last, time);
        wire.bytes.push_back({wire.last, byte});
    }

    void put(Wire& wire, std::uint8_t byte, std::uint64_t time)
    {
        wire.recent.push_back(byte);
        if (wire.left > 0) {
            --wire.left;
        } else if (!faulty_ || untilFault_-- > 0) {
            arrive(wire, byte, time);
        } else {
            strike(wire, byte, time);
            untilFault_ = faults_.take8();
        }
    }

    void strike(Wire& wire, std::uint8_t byte, std::uint64_t time)
    {
        const auto fault = static_cast<Fault>(faults_.take8() % kFaults);
        const std::uint8_t much = faults_.take8();
        switch (fault) {
            case Fault::kDrop:
                return;
            case Fault::kDropMany:
                wire.left = much;
                return;
            case Fault::kFlip:
                return arrive(wire, static_cast<std::uint8_t>(byte ^ 1U << much % 8), time);
            case Fault::kInsert:
                arrive(wire, much, time);
                break;
            case Fault::kRepeat:
                arrive(wire, byte, time);
                break;
            case Fault::kRepeatMany:
                arrive(wire, byte, time);
                return repeat(wire, much, time);
            case Fault::kDelay:
                time += much * 8 * kMillisecond;
                break;
            case Fault::kEcho:
                arrive(&wire == &toBoard_ ? toHost_ : toBoard_, byte, time);
                break;
            case Fault::kRestart:
                board_.restart();
                break;
            case Fault::kAnotherHost:
                board_.greetAsAnother();
                break;
        }
        arrive(wire, byte, time);
    }

    // What has been sent in one go comes once more, the last part of it or all.
    static void repeat(Wire& wire, std::size_t count, std::uint64_t time)
    {
        count = std::min(count, wire.recent.size());
        for (std::size_t i = wire.recent.size() - count; i < wire.recent.size(); ++i) {
            arrive(wire, wire.recent[i], time);
        }
    }

    void deliver(std::uint64_t until)
    {
        while (!toBoard_.bytes.empty() && toBoard_.bytes.front().time <= until) {
            std::uint64_t time = toBoard_.bytes.front().time;
            const std::span<const std::uint8_t> answer = board_.take(take(toBoard_));
            if (!answer.empty()) {
                toHost_.recent.clear();
            }
            for (const std::uint8_t byte : answer) {
                time += kByteNanoseconds;
                put(toHost_, byte, time);
            }
        }
    }

    Board& board_;
    fuzz::ByteSource faults_;
    bool faulty_;
    unsigned untilFault_;
    Wire toBoard_;
    Wire toHost_;
    std::uint64_t time_ = 0;
};

vek::AccessPath cardWith(vek::AddressSpace& space, vek::SpiBus& spi)
{
    return {.mode = VEK_ACCESS_DRIVER,
            .card = 0,
            .deviceId = VEK_DEVICE_QZ201,
            .registers = nullptr,
            .videoMemory = nullptr,
            .kernelMemory = nullptr,
            .amba = &space,
            .crtc = nullptr,
            .pciConfiguration = nullptr,
            .i2c = {},
            .spi = &spi,
            .ddc = {},
            .hdmiPhys = {}};
}

/// The host's end, over which each operation reaches addresses of its own.
class Host
{
public:
    Host(FaultyLine& line, const CountingSpace& memory, const CountingSpi& spi)
        : line_(line), memory_(memory), spiDevice_(spi)
    {
    }

    int begin()
    {
        constexpr std::uint32_t kNonce = 0x1234'5678;
        vek::SerialSession session;
        const int result = session.begin(line_, kRate, kNonce);
        link_.use(session);
        return result;
    }

    int operate(std::uint8_t choice)
    {
        constexpr std::uint64_t kBetweenOperations = 150 * kMillisecond;
        line_.pass(kBetweenOperations);
        ++operations_;
        const std::uint64_t address = operations_ * kAddressesOfAnOperation;
        const unsigned much = choice / 8U;
        const unsigned width = 1U << much % 4;
        // The longest ones take two requests.
        const std::size_t longs = std::size_t{9} * much;
        switch (choice % 8U) {
            case 0:
            case 1:
                return read(address, width);
            case 2:
                return write(address, width);
            case 3:
                return readLongs(address, longs);
            case 4:
                return writeLongs(address, longs);
            case 5:
                return fillLong(address);
            default:
                return transfer();
        }
    }

private:
    int read(std::uint64_t address, unsigned width)
    {
        const auto [result, value] = space_.read(address, width);
        fuzz::require(result != VEK_OK || value == contentOf(address, width, 0));
        return note(result, address);
    }

    int write(std::uint64_t address, unsigned width)
    {
        return note(space_.write(address, width, contentOf(address, width, 0)), address);
    }

    int readLongs(std::uint64_t address, std::size_t count)
    {
        std::vector<std::uint32_t> longs(count);
        const int result = space_.readLongs(address, longs.data(), count);
        for (std::size_t i = 0; result == VEK_OK && i < count; ++i) {
            fuzz::require(longs[i] == longAt(address + i * sizeof longs[i]));
        }
        return note(result, address, count);
    }

    int writeLongs(std::uint64_t address, std::size_t count)
    {
        std::vector<std::uint32_t> longs(count);
        for (std::size_t i = 0; i < count; ++i) {
            longs[i] = longAt(address + i * sizeof longs[i]);
        }
        return note(space_.writeLongs(address, longs.data(), count), address, count);
    }

    int fillLong(std::uint64_t address) { return note(space_.fillLongs(address, longAt(address), 1), address, 1); }

    int transfer()
    {
        const std::array<std::uint8_t, 2> number{static_cast<std::uint8_t>(operations_),
                                                 static_cast<std::uint8_t>(operations_ >> 8)};
        spi_.select();
        const int result = spi_.write(number);
        spi_.deselect();
        fuzz::require(result < 0 || spiDevice_.last() == operations_);
        return result;
    }

    // What the board is said to have done, it has done.
    int note(int result, std::uint64_t address, std::size_t longs = 1) const
    {
        fuzz::require(result <= VEK_OK);
        for (std::size_t i = 0; result == VEK_OK && i < longs; ++i) {
            fuzz::require(memory_.accessed(address + i * sizeof(std::uint32_t)));
        }
        return result;
    }

    FaultyLine& line_;
    const CountingSpace& memory_;
    const CountingSpi& spiDevice_;
    vek::SerialLink link_;
    vek::RemoteSpace space_{link_, 0};
    vek::RemoteSpiBus spi_{link_};
    std::uint16_t operations_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::span<const std::uint8_t> rest = std::span(data, size).subspan(1);
    const auto operations = rest.first(std::min<std::size_t>(data[0] % (kMostOperations + 1), rest.size()));
    const auto faults = rest.subspan(operations.size());
    CountingSpace memory;
    CountingSpi spi;
    const vek::AccessPath card = cardWith(memory, spi);
    Board board(card);
    FaultyLine line(board, faults);
    Host host(line, memory, spi);
    const int begun = host.begin();
    fuzz::require(begun == VEK_OK || !faults.empty());
    for (const std::uint8_t choice : operations) {
        const int result = host.operate(choice);
        fuzz::require(result == VEK_OK || !faults.empty());
    }
    line.runDry();
    memory.expectNothingTwice();
    return 0;
}
