/**
 * @file recording_vek.h
 * A stand-in for the device-access library that records every call and answers what a test has told it to answer.
 *
 * All functions of vek.h are defined here. Each call becomes one line "name(argument, ...)":
 * - addresses, values and other unsigned arguments in hexadecimal ("0x10"), plain integers in decimal;
 * - texts in double quotes, with control characters, quotes and backslashes escaped as in C;
 * - null texts and null buffers as "null", other buffers that the caller fills, or may leave out, as "buffer";
 * - pointers that only receive results are left out.
 *
 * A call answers 0, or what setResult() or setResultOnCall() ask for. A negative answer leaves all outputs untouched,
 * unless setDeliveryOnCall() asks for another.
 * Nothing is printed, and no file is read or written.
 *
 * Built as the shared library libutil_vek.so the same source serves tests of the finished program, which steer it with
 * environment variables (they hold in the static library as well, and reset() reads them afresh):
 * - RECORDING_VEK_LOG: file that each line is appended to at once;
 * - RECORDING_VEK_MODE: the access mode, decimal;
 * - RECORDING_VEK_DEVICE_ID: the device id, hexadecimal;
 * - RECORDING_VEK_RESULT_<function>: the result of a function, decimal.
 * A malformed value ends the process with a message.
 */
#ifndef RECORDING_VEK_H
#define RECORDING_VEK_H

#include <vek.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace recording_vek
{

/** Byte-addressed memory that holds what has been written; all other bytes read 0, or what a pattern makes of their
    addresses. Items are little-endian. */
class SparseMemory
{
public:
    /** Stores an item of the width of its type. */
    template <typename Item>
    void poke(std::uint64_t address, Item value)
    {
        for (std::size_t i = 0; i < sizeof(Item); ++i) {
            bytes_[address + i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i));
        }
    }

    /** Stores consecutive bytes. */
    void pokeBytes(std::uint64_t address, const std::vector<std::uint8_t>& bytes);

    /** Has the bytes that have not been written read as their addresses do modulo 255, plus 1: none of them 0. */
    void showPattern() { showsPattern_ = true; }

    /** Reads an item of the width of its type. */
    template <typename Item>
    Item peek(std::uint64_t address) const
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(Item); ++i) {
            value |= std::uint64_t{byteAt(address + i)} << (8 * i);
        }
        return static_cast<Item>(value);
    }

    /** The bytes that have been written, by address. */
    const std::map<std::uint64_t, std::uint8_t>& bytes() const { return bytes_; }

private:
    std::uint8_t byteAt(std::uint64_t address) const;

    std::map<std::uint64_t, std::uint8_t> bytes_;
    bool showsPattern_ = false;
};

/** What the functions deliver besides their result; a test sets the fields that it needs. */
struct Outputs {
    /** EDID of every interface. */
    std::vector<std::uint8_t> edid;
    int edid_valid = 1;
    /** The length reported with the EDID, when it is not that of the bytes. */
    std::optional<int> edid_length;

    /** vekHdmiModeRead(), vekDpModeRead(), vekCrtcModeRead(). */
    VekDisplayMode display_mode{};
    /** Off: the mode reads leave `flags` as the caller set it. */
    bool mode_read_sets_flags = true;
    std::uint8_t hot_plug_status = 0;

    /** X, Y, W, H, CutLeft, ZoomW, ZoomH, Connector, CameraW, CameraH. */
    std::array<std::int32_t, 10> zoom_video{};

    std::array<double, 2> temperatures{};
    std::array<double, 2> voltages{};
    /** Process readings by monitor kind and sensor. */
    std::map<std::pair<int, int>, int> process;
    std::array<float, 2> ltc2990_currents{};
    std::array<float, 4> ltc2990_volts{};
    std::array<float, 4> ltc2991_currents{};
    std::array<float, 8> ltc2991_volts{};
    std::array<float, 2> ina3221_currents{};
    std::array<float, 2> ina3221_millivolts{};

    int power_state = 0;
    /** Frequencies in MHz by clock domain, the result of vek_qz200_get_freq() unless one is set by name. */
    std::map<int, int> clock_mhz;
    std::uint32_t pll_setting = 0;

    std::array<int, 4> version{};
    gpu_info info{};

    /** The result of vekGetCard() unless one is set by name. */
    int selected_card = 0;
    /** vekQueryInt() by item. */
    std::map<int, int> query_values;
    /** vekQueryInfo(); a text of VEK_QUERY_REPORT_SIZE characters or more fills the report with no NUL at its end. */
    std::string query_report;

    /** vekI2cErrString() by code; "error <code>" where none is set. */
    std::map<int, std::string> i2c_error_texts;
    /** vekPowerStateName() by state; "state <number>" where none is set. */
    std::map<int, std::string> power_state_names;

    /** On: vek_thread_qz202monitor() waits to be cancelled. Off: it returns at once. */
    bool collector_waits = true;
};

/** Contents of buffers that the functions were given to print. */
struct Received {
    std::vector<std::uint32_t> dumped;      /**< the last dump_vram() */
    std::vector<std::uint8_t> printed_edid; /**< the last edid_print_helper() */
};

/** Forgets all calls, results, outputs and memories. */
void reset();

/** The lines of all calls since reset(), in order. Not to be held while a collector thread is about to record. */
const std::vector<std::string>& calls();

/** The lines of calls() but for get_s_type() and get_device_id(), which only ask what the connection is. */
std::vector<std::string> deviceCalls();

/** Has a function see the line of every call once it is recorded, before the call is answered: what it changes in the
    outputs and memories counts for this call already. Null, or reset(), ends that. It must not call the library. */
void setOnCall(std::function<void(const std::string& line)> react);

/** Adds a line to calls() for something that is not a call of the library, to see its place among them. */
void note(const std::string& line);

/** Waits until a function has been called, by whichever thread. @return false when the time is over */
bool waitForCall(const std::string& name, std::chrono::milliseconds timeout);

/** Waits until a waiting vek_thread_qz202monitor() has been cancelled. @return false when the time is over */
bool waitForCancelledCollector(std::chrono::milliseconds timeout);

/** Sets the result of every call of a function. */
void setResult(const std::string& name, int result);

/** Sets the result of one call of a function, the first since reset() being number 1; stronger than setResult(). */
void setResultOnCall(const std::string& name, int number, int result);

/** What becomes of the outputs of a call, whatever it answers. */
enum class Delivery { kNever, kAlways };

/** Sets what becomes of the outputs of one call of a function, the first since reset() being number 1. */
void setDeliveryOnCall(const std::string& name, int number, Delivery delivery);

/** Has a function that answers with a text answer with none. */
void setNullText(const std::string& name);

/** Sets the result of get_s_type(); 0 after reset(). */
void setMode(int mode);

/** Sets the result of get_device_id(); 0x201 after reset(). */
void setDeviceId(unsigned int id);

Outputs& outputs();
const Received& received();

SparseMemory& registers();
SparseMemory& videoMemory();
SparseMemory& kernelMemory();
SparseMemory& ambaBus();
SparseMemory& crtcRegisters();
/** PCI configuration space, double words by offset. */
std::map<std::int32_t, std::uint32_t>& pci();
/** Bytes by sub-address, the same for every channel and device. */
SparseMemory& i2cDevice();
/** Bytes by sub-address of the HDMI DDC, the same for every channel and slave. */
SparseMemory& hdmiDdc();
/** 16-bit registers by address. */
SparseMemory& hdmiPhy();
/** Bytes by DPCD address. */
SparseMemory& dpcd();
/** Bytes by sub-address, read through I2C over AUX. */
SparseMemory& dpI2cDevice();
/** 16-bit registers by address. */
SparseMemory& dpCdb();
/** 32-bit registers by address. */
SparseMemory& dpPhy();
SparseMemory& spiFlash();

}  // namespace recording_vek

#endif
