#include "support/hostile_vek.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include "support/byte_source.h"
#include "vek.h"

namespace
{

constexpr std::uint64_t kMailboxCompletion = 0x3ff1c;
constexpr std::uint32_t kMailboxCompleted = 0x55aa55aa;
constexpr int kLongestEdid = 0x8000;

// Commands that go on until the library fails come to an end after so many calls, since all calls fail from then on.
constexpr unsigned kMostCalls = 4096;

// Runs that are longer fail: filling and printing them would take the time of many inputs.
constexpr int kLongestRun = 0x4000;

/// What the stand-in answers, drawn from the input.
struct HostileLibrary {
    fuzz::ByteSource source;
    unsigned calls = 0;
    int mode = VEK_ACCESS_DRIVER;
    unsigned deviceId = VEK_DEVICE_QZ201;
    std::unique_ptr<std::uint8_t[]> lentBytes;
    std::array<char, 600> lentText{};

    bool exhausted() const { return calls >= kMostCalls; }

    int result()
    {
        if (exhausted()) {
            return VEK_IO_ERROR;
        }
        ++calls;
        switch (source.take8() & 7U) {
            case 0:
                return VEK_BAD_ARGUMENT;
            case 1:
                return VEK_TIMED_OUT;
            case 2:
                return 1;
            case 3:
                return static_cast<int>(source.take32());
            default:
                return VEK_OK;
        }
    }

    /// Fills a result cell or leaves it alone, whatever the result is.
    template <typename Cell>
    void fill(Cell* cell)
    {
        static_assert(std::is_trivially_copyable_v<Cell>);
        switch (exhausted() ? 0 : source.take8() & 7U) {
            case 0:
                break;
            case 1:
                memset(cell, 0xff, sizeof *cell);
                break;
            case 2:
                memset(cell, 0, sizeof *cell);
                break;
            default:
                source.fill({reinterpret_cast<std::uint8_t*>(cell), sizeof *cell});
        }
    }

    template <typename... Cells>
    int answer(Cells*... cells)
    {
        const int outcome = result();
        (fill(cells), ...);
        return outcome;
    }

    /// Fills a buffer of that many bytes, or a part of it, without a NUL at the end of what may be a text.
    int answerBytes(std::uint8_t* bytes, std::size_t size)
    {
        const int outcome = result();
        if (!exhausted()) {
            const std::size_t filled = source.chance(2) ? size : size * source.take8() / 256;
            source.fill({bytes, filled});
        }
        return outcome;
    }

    /// Fills a run whose length came from the console; none when the length is not above 0.
    template <typename Item>
    int answerRun(Item* items, int count)
    {
        if (count > kLongestRun) {
            return VEK_BAD_ARGUMENT;
        }
        if (count <= 0 || items == nullptr) {
            return result();
        }
        return answerBytes(reinterpret_cast<std::uint8_t*>(items), static_cast<std::size_t>(count) * sizeof(Item));
    }

    /// A text that is the library's: none, an empty one, or a long one of any bytes.
    const char* text()
    {
        if (source.chance(4)) {
            return nullptr;
        }
        const std::size_t length = source.take8() * 2U;
        source.fill({reinterpret_cast<std::uint8_t*>(lentText.data()), length});
        lentText[length] = '\0';
        return lentText.data();
    }

    /// Bytes that are the library's, as many as asked for and no more.
    std::uint8_t* lend(std::size_t size)
    {
        lentBytes.reset(new std::uint8_t[size]);
        source.fill({lentBytes.get(), size});
        return lentBytes.get();
    }

    const std::uint8_t* lent() const { return lentBytes.get(); }
};

HostileLibrary hostile;

volatile std::uint8_t lookedAt;

// Reads all that the console hands over, so that the sanitizer sees what is not its own.
void look(const void* bytes, std::int64_t size)
{
    const auto* const from = static_cast<const std::uint8_t*>(bytes);
    for (std::int64_t i = 0; from != nullptr && i < size; ++i) {
        lookedAt = from[i];
    }
}

void look(const char* text)
{
    look(text, text == nullptr ? 0 : static_cast<std::int64_t>(strlen(text)));
}

int anyMode(fuzz::ByteSource& source)
{
    constexpr int kModes[] = {VEK_ACCESS_DRIVER, VEK_ACCESS_MEM, VEK_ACCESS_SERIAL, VEK_NO_PATH};
    const std::uint8_t choice = source.take8();
    return choice < 0xf0 ? kModes[choice % 4] : static_cast<int>(source.take32());
}

unsigned anyDeviceId(fuzz::ByteSource& source)
{
    const std::uint8_t choice = source.take8();
    if (choice >= 0xf0) {
        return source.take32();
    }
    return choice % 2 == 0 ? VEK_DEVICE_QZ201 : VEK_DEVICE_QZ202;
}

}  // namespace

namespace fuzz
{

void answerFrom(std::span<const std::uint8_t> answers)
{
    hostile = HostileLibrary{};
    hostile.source = ByteSource(answers);
    hostile.mode = anyMode(hostile.source);
    hostile.deviceId = anyDeviceId(hostile.source);
}

}  // namespace fuzz

int vekRwOpen(int /*card*/)
{
    return hostile.answer();
}

int vekMemOpen(uint64_t /*reg_start*/, uint64_t /*reg_size*/, uint64_t /*vram_start*/, uint64_t /*vram_size*/)
{
    return hostile.answer();
}

int vekSerialOpen(const char* path, int /*baud_rate*/)
{
    look(path);
    return hostile.answer();
}

int vekClose()
{
    return hostile.answer();
}

int get_s_type()
{
    return hostile.mode;
}

unsigned int get_device_id()
{
    return hostile.deviceId;
}

int doGetDeviceId(const char* program_name, const char* gpu_type)
{
    look(program_name);
    look(gpu_type);
    return hostile.answer();
}

int vekSetCard(int /*card*/)
{
    return hostile.answer();
}

int vekGetCard()
{
    return hostile.answer();
}

int vekQueryInt(int /*item*/, int* value, int /*card*/)
{
    return hostile.answer(value);
}

int vekQueryInfo(const char* keyword, char* report)
{
    look(keyword);
    return hostile.answerBytes(reinterpret_cast<std::uint8_t*>(report), VEK_QUERY_REPORT_SIZE);
}

int vekRegReadByte(uint64_t /*address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekRegReadWord(uint64_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekRegReadLong(uint64_t address, uint32_t* value)
{
    const int result = hostile.answer(value);
    // The console waits for the board without an end, as it has to: the board answers some time.
    if (address == kMailboxCompletion && (hostile.exhausted() || hostile.source.chance(2))) {
        *value = kMailboxCompleted;
    }
    return result;
}

int vekRegReadQuad(uint64_t /*address*/, uint64_t* value)
{
    return hostile.answer(value);
}

int vekRegWriteByte(uint64_t /*address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekRegWriteWord(uint64_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekRegWriteLong(uint64_t /*address*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekRegWriteQuad(uint64_t /*address*/, uint64_t /*value*/)
{
    return hostile.answer();
}

int vekVramReadByte(uint64_t /*address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekVramReadWord(uint64_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekVramReadLong(uint64_t /*address*/, uint32_t* value)
{
    return hostile.answer(value);
}

int vekVramReadQuad(uint64_t /*address*/, uint64_t* value)
{
    return hostile.answer(value);
}

int vekVramWriteByte(uint64_t /*address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekVramWriteWord(uint64_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekVramWriteLong(uint64_t /*address*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekVramWriteQuad(uint64_t /*address*/, uint64_t /*value*/)
{
    return hostile.answer();
}

int vekMultiVramReadLong(uint32_t* buffer, uint64_t /*address*/, int count, const char* file)
{
    look(file);
    return hostile.answerRun(buffer, count);
}

int vekMultVramWriteLong(uint32_t /*value*/, uint64_t /*address*/, int /*count*/, const char* file)
{
    look(file);
    return hostile.answer();
}

int dump_vram(const void* buffer, int item_size, uint64_t /*address*/, int count)
{
    look(buffer, static_cast<std::int64_t>(item_size) * count);
    return hostile.answer();
}

int vekDumpVramFree()
{
    return hostile.answer();
}

int vekKmemReadByte(uint64_t /*address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekKmemReadWord(uint64_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekKmemReadLong(uint64_t /*address*/, uint32_t* value)
{
    return hostile.answer(value);
}

int vekKmemReadQuad(uint64_t /*address*/, uint64_t* value)
{
    return hostile.answer(value);
}

int vekKmemWriteByte(uint64_t /*address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekKmemWriteWord(uint64_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekKmemWriteLong(uint64_t /*address*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekKmemWriteQuad(uint64_t /*address*/, uint64_t /*value*/)
{
    return hostile.answer();
}

int vekAmbaReadByte(uint64_t /*address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekAmbaReadWord(uint64_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekAmbaReadLong(uint64_t /*address*/, uint32_t* value)
{
    return hostile.answer(value);
}

int vekAmbaReadQuad(uint64_t /*address*/, uint64_t* value)
{
    return hostile.answer(value);
}

int vekAmbaWriteByte(uint64_t /*address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekAmbaWriteWord(uint64_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekAmbaWriteLong(uint64_t /*address*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekAmbaWriteQuad(uint64_t /*address*/, uint64_t /*value*/)
{
    return hostile.answer();
}

int vekCrtcReadByte(uint32_t /*index*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekCrtcWriteByte(uint32_t /*index*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekPciRead(int32_t /*offset*/, uint32_t* value)
{
    return hostile.answer(value);
}

int vekPciWrite(int32_t /*offset*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekI2cRead(int /*channel*/, uint32_t /*device*/, uint32_t /*sub_address*/, int count, uint8_t* data)
{
    return hostile.answerRun(data, count);
}

int vekI2cWrite(int /*channel*/, uint32_t /*device*/, uint32_t /*sub_address*/, int count, const uint8_t* data)
{
    look(data, count);
    return hostile.answer();
}

const char* vekI2cErrString(int /*error*/)
{
    return hostile.text();
}

int vekDDCRead(int /*channel*/, int* length, uint8_t** data, int* valid)
{
    const int result = hostile.answer(length, valid);
    if (!hostile.source.chance(4)) {
        // As many bytes as an EDID can have, or fewer if fewer are claimed.
        *data = hostile.lend(static_cast<std::size_t>(std::clamp(*length, 0, kLongestEdid)));
    }
    return result;
}

int edid_print_helper(const uint8_t* data, int length, int /*flag*/)
{
    // What the library has lent itself may be claimed to be longer than it is.
    if (data != hostile.lent()) {
        look(data, length);
    }
    return hostile.answer();
}

int do_edid_parse(const char* path)
{
    look(path);
    return hostile.answer();
}

int vekHdmiDDCInit(int /*channel*/)
{
    return hostile.answer();
}

int vekHdmiDDCRead(int /*channel*/, uint8_t /*slave*/, uint8_t /*sub_address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekHdmiDDCWrite(int /*channel*/, uint8_t /*slave*/, uint8_t /*sub_address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekHdmiEDIDRead(int /*channel*/)
{
    return hostile.answer();
}

int vekHdmiHpdSense(int /*channel*/, uint8_t* status)
{
    return hostile.answer(status);
}

int vekHdmiModeRead(int /*channel*/, VekDisplayMode* mode)
{
    return hostile.answer(mode);
}

int vekHdmiPhyStart(int /*channel*/)
{
    return hostile.answer();
}

int vekHdmiPhyEnd(int /*channel*/)
{
    return hostile.answer();
}

int vekHdmiPhyReset(int /*channel*/)
{
    return hostile.answer();
}

int vekHdmiPhyRead(int /*channel*/, uint32_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekHdmiPhyWrite(int /*channel*/, uint32_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekDpInit(int /*channel*/)
{
    return hostile.answer();
}

int vekDpLinkTraining(int /*channel*/)
{
    return hostile.answer();
}

int vekDpCTLCfg(int /*channel*/)
{
    return hostile.answer();
}

int vekDpModeRead(int /*channel*/, VekDisplayMode* mode)
{
    return hostile.answer(mode);
}

int vekDpAuxRead(int /*channel*/, uint32_t /*address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekDpAuxReadBuf(int /*channel*/, uint32_t /*address*/, uint8_t* buffer, int count)
{
    return hostile.answerRun(buffer, count);
}

int vekDpAuxWrite(int /*channel*/, uint32_t /*address*/, uint8_t /*value*/)
{
    return hostile.answer();
}

int vekDpAuxEdidGet(int /*channel*/, uint8_t* buffer, int* length)
{
    hostile.answer(length);
    return hostile.answerBytes(buffer, VEK_EDID_BUFFER_SIZE);
}

int vekDpI2cRead(int /*channel*/, uint32_t /*device*/, uint8_t /*sub_address*/, uint8_t* value)
{
    return hostile.answer(value);
}

int vekDpI2cReadBuf(int /*channel*/, uint32_t /*device*/, uint8_t /*sub_address*/, uint8_t* buffer, int count)
{
    return hostile.answerRun(buffer, count);
}

int vekDpCdbRead(int /*channel*/, uint32_t /*address*/, uint16_t* value)
{
    return hostile.answer(value);
}

int vekDpCdbWrite(int /*channel*/, uint32_t /*address*/, uint16_t /*value*/)
{
    return hostile.answer();
}

int vekDpPhyRead(int /*channel*/, uint32_t /*address*/, uint32_t* value)
{
    return hostile.answer(value);
}

int vekDpPhyWrite(int /*channel*/, uint32_t /*address*/, uint32_t /*value*/)
{
    return hostile.answer();
}

int vekEdpEnablePwm()
{
    return hostile.answer();
}

int vekEdpPwmSet(int /*frequency_hz*/)
{
    return hostile.answer();
}

int vekEdpLightSet(int /*percent*/)
{
    return hostile.answer();
}

int vekEdpSelfTestSet(int /*channel*/, uint8_t /*state*/)
{
    return hostile.answer();
}

int vekCrtcModeRead(int /*channel*/, VekDisplayMode* mode)
{
    return hostile.answer(mode);
}

int vekCrtcOutputPrint()
{
    return hostile.answer();
}

int vekCrtcGammaSet(const char* setting)
{
    look(setting);
    return hostile.answer();
}

int vekVgaSetGain(uint8_t /*red*/, uint8_t /*green*/, uint8_t /*blue*/)
{
    return hostile.answer();
}

int vekVgaSetSigleGain(int /*colour*/, uint8_t /*gain*/)
{
    return hostile.answer();
}

int vekZoomVideoInit(int /*id*/, int /*i2c_channel*/, int /*i2c_sa*/, int /*layer*/)
{
    return hostile.answer();
}

int vekZoomVideoStart(int /*id*/, int /*x*/, int /*y*/, int /*w*/, int /*h*/, int /*cut_left*/, int /*zoomw*/,
                      int /*zoomh*/, int /*connector*/)
{
    return hostile.answer();
}

int vekZoomVideoStop(int /*id*/)
{
    return hostile.answer();
}

int vekZoomVideoRestart(int /*id*/)
{
    return hostile.answer();
}

int vekZoomVideoGetParm(int /*id*/, int32_t* x, int32_t* y, int32_t* w, int32_t* h, int32_t* cut_left, int32_t* zoomw,
                        int32_t* zoomh, int32_t* connector, int32_t* camera_w, int32_t* camera_h)
{
    return hostile.answer(x, y, w, h, cut_left, zoomw, zoomh, connector, camera_w, camera_h);
}

int vekSpiReadBuffer(void* buffer, int /*address*/, int size)
{
    return hostile.answerRun(static_cast<std::uint8_t*>(buffer), size);
}

int vekSpiErase(int /*address*/, int /*size*/)
{
    return hostile.answer();
}

int vekSpiProgram(const void* buffer, int /*address*/, int size)
{
    look(buffer, size);
    return hostile.answer();
}

int vekSpiProtect()
{
    return hostile.answer();
}

int vekSpiUnprotect()
{
    return hostile.answer();
}

int vekSensorTemp(int /*sensor*/, double* celsius)
{
    return hostile.answer(celsius);
}

int vekSensorVolt(int /*sensor*/, double* volts)
{
    return hostile.answer(volts);
}

int vekSensorProcess(int /*kind*/, int /*sensor*/, int* reading)
{
    return hostile.answer(reading);
}

int vekLTC2990GetCurrent2(int /*channel*/, int /*address_index*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/,
                          float* current1, float* current2, int /*repeated*/, int /*wait_ready*/)
{
    return hostile.answer(current1, current2);
}

int vekLTC2990GetVolt4(int /*channel*/, int /*address_index*/, float* v1, float* v2, float* v3, float* v4,
                       int /*repeated*/, int /*wait_ready*/)
{
    return hostile.answer(v1, v2, v3, v4);
}

int vekLTC2991GetCurrent4(int /*channel*/, int /*address_index*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/,
                          unsigned int /*rsense3*/, unsigned int /*rsense4*/, float* current1, float* current2,
                          float* current3, float* current4, int /*repeated*/, int /*wait_ready*/)
{
    return hostile.answer(current1, current2, current3, current4);
}

int vekLTC2991GetVolt8(int /*channel*/, int /*address_index*/, float* v1, float* v2, float* v3, float* v4, float* v5,
                       float* v6, float* v7, float* v8, int /*repeated*/, int /*wait_ready*/)
{
    return hostile.answer(v1, v2, v3, v4, v5, v6, v7, v8);
}

int vekINA3221GetVolt2(int /*channel*/, float* millivolts1, float* millivolts2)
{
    return hostile.answer(millivolts1, millivolts2);
}

int vekINA3221GetCurrent2(int /*channel*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/, float* current1,
                          float* current2)
{
    return hostile.answer(current1, current2);
}

int vekPowerGetState(int* state)
{
    return hostile.answer(state);
}

int vekPowerSetState(int /*state*/)
{
    return hostile.answer();
}

const char* vekPowerStateName(int /*state*/)
{
    return hostile.text();
}

int vekFanSetRate(int /*rate*/)
{
    return hostile.answer();
}

int vekThermalDebug(int /*temperature*/)
{
    return hostile.answer();
}

int tovira_func(char* text, int /*repeat*/)
{
    if (text != nullptr) {
        return hostile.answerBytes(reinterpret_cast<std::uint8_t*>(text), strlen(text));
    }
    return hostile.answer();
}

int vek_qz200_get_freq(int /*domain*/)
{
    return hostile.answer();
}

int vek_qz200_pllcalc(int /*reference_khz*/, int /*mode*/, uint32_t /*wanted_khz*/, uint32_t* setting)
{
    return hostile.answer(setting);
}

int vek_qz200_set_clk_freq(int /*domain*/, uint32_t /*setting*/)
{
    return hostile.answer();
}

int vek_qz200_set_clk_mode(int /*mode*/, int /*source*/)
{
    return hostile.answer();
}

int vekRvtcoreVer(int* major, int* minor, int* third, int* fourth)
{
    return hostile.answer(major, minor, third, fourth);
}

int vekInfoRead(gpu_info* info)
{
    return hostile.answer(info);
}

int vekMonitorAxiTrans_QZ201()
{
    return hostile.answer();
}

void* vek_thread_qz202monitor(void* folder_name)
{
    look(static_cast<const char*>(folder_name));
    return nullptr;
}

int vekRunScript(const char* name)
{
    look(name);
    return hostile.answer();
}
