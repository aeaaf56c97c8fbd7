#include "recording_vek.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace recording_vek
{
namespace
{

/** The longest run that vekMultVramWriteLong() stores: the console hands on any count that is typed. */
constexpr int kLongestRun = 0x10000;

constexpr std::string_view kResultPrefix = "RECORDING_VEK_RESULT_";

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Memories {
    SparseMemory registers;
    SparseMemory video;
    SparseMemory kernel;
    SparseMemory amba;
    SparseMemory crtc;
    std::map<std::int32_t, std::uint32_t> pci;
    SparseMemory i2c;
    SparseMemory hdmi_ddc;
    SparseMemory hdmi_phy;
    SparseMemory dpcd;
    SparseMemory dp_i2c;
    SparseMemory dp_cdb;
    SparseMemory dp_phy;
    SparseMemory spi;
};

struct Settings {
    int mode = VEK_ACCESS_DRIVER;
    unsigned int device_id = VEK_DEVICE_QZ201;
    std::map<std::string, int, std::less<>> results;
    std::map<std::pair<std::string, int>, int> results_on_call;
    std::map<std::pair<std::string, int>, Delivery> deliveries_on_call;
    std::set<std::string, std::less<>> null_texts;
    std::unique_ptr<std::FILE, FileCloser> log;
};

template <typename Number>
Number parseNumber(std::string_view name, std::string_view text, int base)
{
    Number number{};
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number, base);
    if (parsed.ec != std::errc{} || parsed.ptr != end) {
        throw std::invalid_argument(std::string(name) + ": not a number: " + std::string(text));
    }
    return number;
}

void applyVariable(std::string_view name, std::string_view value, Settings& settings)
{
    if (name == "RECORDING_VEK_MODE") {
        settings.mode = parseNumber<int>(name, value, 10);
    } else if (name == "RECORDING_VEK_DEVICE_ID") {
        const std::string_view digits = value.starts_with("0x") ? value.substr(2) : value;
        settings.device_id = parseNumber<unsigned int>(name, digits, 16);
    } else if (name == "RECORDING_VEK_LOG") {
        settings.log.reset(std::fopen(std::string(value).c_str(), "ae"));
        if (!settings.log) {
            throw std::system_error(errno, std::generic_category(), std::string(value));
        }
    } else if (name.starts_with(kResultPrefix)) {
        settings.results.emplace(name.substr(kResultPrefix.size()), parseNumber<int>(name, value, 10));
    }
}

Settings settingsFromEnvironment()
{
    Settings settings;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::size_t equals = variable.find('=');
        if (equals != std::string_view::npos) {
            applyVariable(variable.substr(0, equals), variable.substr(equals + 1), settings);
        }
    }
    return settings;
}

struct State {
    std::mutex mutex;
    std::condition_variable changed;
    Settings settings = settingsFromEnvironment();
    std::vector<std::string> calls;
    std::map<std::string, int, std::less<>> call_counts;
    std::function<void(const std::string&)> on_call;
    int cancelled_collectors = 0;
    Memories memories;
    Outputs outputs;
    Received received;
    /** Texts handed out as pointers. */
    std::map<std::pair<std::string, int>, std::string> texts;
};

State& state()
{
    static State instance;
    return instance;
}

/** What is set for the outputs of the call that this thread is in. */
thread_local std::optional<Delivery> set_delivery;

/** Whether the call delivers its outputs. */
bool delivers(int result)
{
    return set_delivery ? *set_delivery == Delivery::kAlways : result >= 0;
}

/** Keeps a collector thread from being cancelled while it holds the lock or is half through a line. */
class UncancellableScope
{
public:
    UncancellableScope() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
    ~UncancellableScope() { pthread_setcancelstate(previous_, nullptr); }
    UncancellableScope(const UncancellableScope&) = delete;
    UncancellableScope& operator=(const UncancellableScope&) = delete;

private:
    int previous_ = PTHREAD_CANCEL_ENABLE;
};

/** A buffer of which only its presence is recorded. */
struct Buffer {
    const void* pointer;
};

std::string formatArgument(Buffer buffer)
{
    return buffer.pointer == nullptr ? "null" : "buffer";
}

std::string escaped(unsigned char character)
{
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        default:
            break;
    }
    if (character < 0x20 || character == 0x7f) {
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "\\x%02x", character);
        return code.data();
    }
    return std::string(1, static_cast<char>(character));
}

std::string formatArgument(const char* text)
{
    if (text == nullptr) {
        return "null";
    }
    std::string quoted = "\"";
    for (const char character : std::string_view(text)) {
        quoted += escaped(static_cast<unsigned char>(character));
    }
    return quoted + '"';
}

template <typename Number>
requires std::is_integral_v<Number> std::string formatArgument(Number number)
{
    std::array<char, 24> digits{};
    const int base = std::is_signed_v<Number> ? 10 : 16;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number, base);
    return (base == 16 ? "0x" : "") + std::string(digits.data(), written.ptr);
}

std::optional<int> enterCall(const std::string& name, std::string line)
{
    const UncancellableScope uncancellable;
    State& now = state();
    const std::lock_guard lock(now.mutex);
    if (now.settings.log) {
        std::fprintf(now.settings.log.get(), "%s\n", line.c_str());
        std::fflush(now.settings.log.get());
    }
    now.calls.push_back(std::move(line));
    const int number = ++now.call_counts[name];
    now.changed.notify_all();
    const auto delivery = now.settings.deliveries_on_call.find({name, number});
    set_delivery = delivery == now.settings.deliveries_on_call.end() ? std::nullopt : std::optional(delivery->second);
    const auto on_call = now.settings.results_on_call.find({name, number});
    if (on_call != now.settings.results_on_call.end()) {
        return on_call->second;
    }
    const auto result = now.settings.results.find(name);
    return result == now.settings.results.end() ? std::nullopt : std::optional(result->second);
}

/** Records a call. @return the result that a test has set for it, if any */
template <typename... Arguments>
std::optional<int> record(const char* name, Arguments... arguments)
{
    std::string list;
    ((list += (list.empty() ? "" : ", ") + formatArgument(arguments)), ...);
    const std::string line = std::string(name) + '(' + list + ')';
    const std::optional<int> result = enterCall(name, line);
    if (state().on_call) {
        state().on_call(line);
    }
    return result;
}

/** Records a call. @return its result */
template <typename... Arguments>
int answer(const char* name, Arguments... arguments)
{
    return record(name, arguments...).value_or(VEK_OK);
}

template <typename Value>
void deliver(int result, Value* cell, Value value)
{
    if (delivers(result) && cell != nullptr) {
        *cell = value;
    }
}

/** Fills several result cells, in order, from an array of as many values. */
template <typename Value, std::size_t Count, typename... Cells>
void deliverAll(int result, const std::array<Value, Count>& values, Cells*... cells)
{
    static_assert(sizeof...(Cells) == Count);
    std::size_t next = 0;
    (deliver(result, cells, values[next++]), ...);
}

/** A read of an item; arguments are what the function was given before the result cell, the address last. */
template <typename Item, typename Address, typename... Others>
int readItem(const char* name, const SparseMemory& memory, Item* cell, Address address, Others... others)
{
    const int result = answer(name, others..., address);
    deliver(result, cell, memory.peek<Item>(address));
    return result;
}

template <typename Item, typename Address, typename... Others>
int writeItem(const char* name, SparseMemory& memory, Item value, Address address, Others... others)
{
    const int result = answer(name, others..., address, value);
    if (delivers(result)) {
        memory.poke(address, value);
    }
    return result;
}

void deliverBytes(int result, const SparseMemory& memory, std::uint64_t address, std::uint8_t* buffer, int count)
{
    for (int i = 0; delivers(result) && buffer != nullptr && i < count; ++i) {
        buffer[i] = memory.peek<std::uint8_t>(address + static_cast<std::uint64_t>(i));
    }
}

void storeBytes(int result, SparseMemory& memory, std::uint64_t address, const std::uint8_t* buffer, int count)
{
    for (int i = 0; delivers(result) && buffer != nullptr && i < count; ++i) {
        memory.poke(address + static_cast<std::uint64_t>(i), buffer[i]);
    }
}

void deliverMode(int result, VekDisplayMode* mode)
{
    if (!delivers(result) || mode == nullptr) {
        return;
    }
    const std::int32_t flags = mode->flags;
    *mode = outputs().display_mode;
    if (!outputs().mode_read_sets_flags) {
        mode->flags = flags;
    }
}

int valueOr(const std::map<int, int>& values, int key, int otherwise)
{
    const auto found = values.find(key);
    return found == values.end() ? otherwise : found->second;
}

/** The text set for a number, else one made of a word and the number; null where the function is to answer so. The
    pointer holds until the same is asked for again, or until reset(). */
const char* textFor(const char* function, const std::map<int, std::string>& texts, const char* word, int number)
{
    if (state().settings.null_texts.contains(function)) {
        return nullptr;
    }
    const auto found = texts.find(number);
    std::string& kept = state().texts[{word, number}];
    kept = found == texts.end() ? std::string(word) + ' ' + std::to_string(number) : found->second;
    return kept.c_str();
}

int reportedEdidLength()
{
    return outputs().edid_length.value_or(static_cast<int>(outputs().edid.size()));
}

void noteCancelledCollector(void* /*unused*/)
{
    State& now = state();
    const std::lock_guard lock(now.mutex);
    ++now.cancelled_collectors;
    now.changed.notify_all();
}

void waitForCancellation()
{
    pthread_cleanup_push(noteCancelledCollector, nullptr);
    for (;;) {
        pause();
    }
    pthread_cleanup_pop(0);
}

}  // namespace

void SparseMemory::pokeBytes(std::uint64_t address, const std::vector<std::uint8_t>& bytes)
{
    for (const std::uint8_t byte : bytes) {
        bytes_[address++] = byte;
    }
}

std::uint8_t SparseMemory::byteAt(std::uint64_t address) const
{
    const auto found = bytes_.find(address);
    if (found != bytes_.end()) {
        return found->second;
    }
    return showsPattern_ ? static_cast<std::uint8_t>(address % 255 + 1) : std::uint8_t{0};
}

void reset()
{
    State& now = state();
    const std::lock_guard lock(now.mutex);
    now.settings = settingsFromEnvironment();
    now.calls.clear();
    now.call_counts.clear();
    now.on_call = nullptr;
    now.cancelled_collectors = 0;
    now.memories = Memories{};
    now.outputs = Outputs{};
    now.received = Received{};
    now.texts.clear();
}

const std::vector<std::string>& calls()
{
    return state().calls;
}

std::vector<std::string> deviceCalls()
{
    std::vector<std::string> found;
    const auto asks_the_device = [](const std::string& line) {
        return line != "get_s_type()" && line != "get_device_id()";
    };
    std::copy_if(calls().begin(), calls().end(), std::back_inserter(found), asks_the_device);
    return found;
}

void setOnCall(std::function<void(const std::string& line)> react)
{
    state().on_call = std::move(react);
}

void note(const std::string& line)
{
    const std::lock_guard lock(state().mutex);
    state().calls.push_back(line);
}

bool waitForCall(const std::string& name, std::chrono::milliseconds timeout)
{
    State& now = state();
    std::unique_lock lock(now.mutex);
    return now.changed.wait_for(lock, timeout, [&] { return now.call_counts.contains(name); });
}

bool waitForCancelledCollector(std::chrono::milliseconds timeout)
{
    State& now = state();
    std::unique_lock lock(now.mutex);
    return now.changed.wait_for(lock, timeout, [&] { return now.cancelled_collectors > 0; });
}

void setResult(const std::string& name, int result)
{
    state().settings.results[name] = result;
}

void setResultOnCall(const std::string& name, int number, int result)
{
    state().settings.results_on_call[{name, number}] = result;
}

void setDeliveryOnCall(const std::string& name, int number, Delivery delivery)
{
    state().settings.deliveries_on_call[{name, number}] = delivery;
}

void setNullText(const std::string& name)
{
    state().settings.null_texts.insert(name);
}

void setMode(int mode)
{
    state().settings.mode = mode;
}

void setDeviceId(unsigned int id)
{
    state().settings.device_id = id;
}

Outputs& outputs()
{
    return state().outputs;
}

const Received& received()
{
    return state().received;
}

SparseMemory& registers()
{
    return state().memories.registers;
}

SparseMemory& videoMemory()
{
    return state().memories.video;
}

SparseMemory& kernelMemory()
{
    return state().memories.kernel;
}

SparseMemory& ambaBus()
{
    return state().memories.amba;
}

SparseMemory& crtcRegisters()
{
    return state().memories.crtc;
}

std::map<std::int32_t, std::uint32_t>& pci()
{
    return state().memories.pci;
}

SparseMemory& i2cDevice()
{
    return state().memories.i2c;
}

SparseMemory& hdmiDdc()
{
    return state().memories.hdmi_ddc;
}

SparseMemory& hdmiPhy()
{
    return state().memories.hdmi_phy;
}

SparseMemory& dpcd()
{
    return state().memories.dpcd;
}

SparseMemory& dpI2cDevice()
{
    return state().memories.dp_i2c;
}

SparseMemory& dpCdb()
{
    return state().memories.dp_cdb;
}

SparseMemory& dpPhy()
{
    return state().memories.dp_phy;
}

SparseMemory& spiFlash()
{
    return state().memories.spi;
}

}  // namespace recording_vek

using namespace recording_vek;

// ---- Connection

int vekRwOpen(int card)
{
    return answer(__func__, card);
}

int vekMemOpen(uint64_t reg_start, uint64_t reg_size, uint64_t vram_start, uint64_t vram_size)
{
    return answer(__func__, reg_start, reg_size, vram_start, vram_size);
}

int vekSerialOpen(const char* path, int baud_rate)
{
    return answer(__func__, path, baud_rate);
}

int vekClose()
{
    return answer(__func__);
}

int get_s_type()
{
    return record(__func__).value_or(state().settings.mode);
}

unsigned int get_device_id()
{
    const std::optional<int> result = record(__func__);
    return result ? static_cast<unsigned int>(*result) : state().settings.device_id;
}

int doGetDeviceId(const char* program_name, const char* gpu_type)
{
    return answer(__func__, program_name, gpu_type);
}

// ---- Card selection and queries

int vekSetCard(int card)
{
    return answer(__func__, card);
}

int vekGetCard()
{
    return record(__func__).value_or(outputs().selected_card);
}

int vekQueryInt(int item, int* value, int card)
{
    const int result = answer(__func__, item, card);
    deliver(result, value, valueOr(outputs().query_values, item, 0));
    return result;
}

int vekQueryInfo(const char* keyword, char* report)
{
    const int result = answer(__func__, keyword);
    if (delivers(result) && report != nullptr) {
        const std::string& text = outputs().query_report;
        const std::size_t size = std::min<std::size_t>(text.size() + 1, VEK_QUERY_REPORT_SIZE);
        std::memcpy(report, text.c_str(), size);
    }
    return result;
}

// ---- Register region

int vekRegReadByte(uint64_t address, uint8_t* value)
{
    return readItem(__func__, registers(), value, address);
}

int vekRegReadWord(uint64_t address, uint16_t* value)
{
    return readItem(__func__, registers(), value, address);
}

int vekRegReadLong(uint64_t address, uint32_t* value)
{
    return readItem(__func__, registers(), value, address);
}

int vekRegReadQuad(uint64_t address, uint64_t* value)
{
    return readItem(__func__, registers(), value, address);
}

int vekRegWriteByte(uint64_t address, uint8_t value)
{
    return writeItem(__func__, registers(), value, address);
}

int vekRegWriteWord(uint64_t address, uint16_t value)
{
    return writeItem(__func__, registers(), value, address);
}

int vekRegWriteLong(uint64_t address, uint32_t value)
{
    return writeItem(__func__, registers(), value, address);
}

int vekRegWriteQuad(uint64_t address, uint64_t value)
{
    return writeItem(__func__, registers(), value, address);
}

// ---- Video memory

int vekVramReadByte(uint64_t address, uint8_t* value)
{
    return readItem(__func__, videoMemory(), value, address);
}

int vekVramReadWord(uint64_t address, uint16_t* value)
{
    return readItem(__func__, videoMemory(), value, address);
}

int vekVramReadLong(uint64_t address, uint32_t* value)
{
    return readItem(__func__, videoMemory(), value, address);
}

int vekVramReadQuad(uint64_t address, uint64_t* value)
{
    return readItem(__func__, videoMemory(), value, address);
}

int vekVramWriteByte(uint64_t address, uint8_t value)
{
    return writeItem(__func__, videoMemory(), value, address);
}

int vekVramWriteWord(uint64_t address, uint16_t value)
{
    return writeItem(__func__, videoMemory(), value, address);
}

int vekVramWriteLong(uint64_t address, uint32_t value)
{
    return writeItem(__func__, videoMemory(), value, address);
}

int vekVramWriteQuad(uint64_t address, uint64_t value)
{
    return writeItem(__func__, videoMemory(), value, address);
}

int vekMultiVramReadLong(uint32_t* buffer, uint64_t address, int count, const char* file)
{
    const int result = answer(__func__, Buffer{buffer}, address, count, file);
    for (int i = 0; delivers(result) && buffer != nullptr && i < count; ++i) {
        buffer[i] = videoMemory().peek<uint32_t>(address + 4 * static_cast<uint64_t>(i));
    }
    return result;
}

int vekMultVramWriteLong(uint32_t value, uint64_t address, int count, const char* file)
{
    const int result = answer(__func__, value, address, count, file);
    const int stored = file == nullptr ? std::min(count, kLongestRun) : 0;
    for (int i = 0; delivers(result) && i < stored; ++i) {
        videoMemory().poke(address + 4 * static_cast<uint64_t>(i), value);
    }
    return result;
}

int dump_vram(const void* buffer, int item_size, uint64_t address, int count)
{
    if (buffer != nullptr && count > 0) {
        std::vector<uint32_t>& dumped = state().received.dumped;
        dumped.resize(static_cast<std::size_t>(count));
        std::memcpy(dumped.data(), buffer, dumped.size() * sizeof(uint32_t));
    }
    return answer(__func__, Buffer{buffer}, item_size, address, count);
}

int vekDumpVramFree()
{
    return answer(__func__);
}

// ---- Kernel virtual memory

int vekKmemReadByte(uint64_t address, uint8_t* value)
{
    return readItem(__func__, kernelMemory(), value, address);
}

int vekKmemReadWord(uint64_t address, uint16_t* value)
{
    return readItem(__func__, kernelMemory(), value, address);
}

int vekKmemReadLong(uint64_t address, uint32_t* value)
{
    return readItem(__func__, kernelMemory(), value, address);
}

int vekKmemReadQuad(uint64_t address, uint64_t* value)
{
    return readItem(__func__, kernelMemory(), value, address);
}

int vekKmemWriteByte(uint64_t address, uint8_t value)
{
    return writeItem(__func__, kernelMemory(), value, address);
}

int vekKmemWriteWord(uint64_t address, uint16_t value)
{
    return writeItem(__func__, kernelMemory(), value, address);
}

int vekKmemWriteLong(uint64_t address, uint32_t value)
{
    return writeItem(__func__, kernelMemory(), value, address);
}

int vekKmemWriteQuad(uint64_t address, uint64_t value)
{
    return writeItem(__func__, kernelMemory(), value, address);
}

// ---- AMBA bus

int vekAmbaReadByte(uint64_t address, uint8_t* value)
{
    return readItem(__func__, ambaBus(), value, address);
}

int vekAmbaReadWord(uint64_t address, uint16_t* value)
{
    return readItem(__func__, ambaBus(), value, address);
}

int vekAmbaReadLong(uint64_t address, uint32_t* value)
{
    return readItem(__func__, ambaBus(), value, address);
}

int vekAmbaReadQuad(uint64_t address, uint64_t* value)
{
    return readItem(__func__, ambaBus(), value, address);
}

int vekAmbaWriteByte(uint64_t address, uint8_t value)
{
    return writeItem(__func__, ambaBus(), value, address);
}

int vekAmbaWriteWord(uint64_t address, uint16_t value)
{
    return writeItem(__func__, ambaBus(), value, address);
}

int vekAmbaWriteLong(uint64_t address, uint32_t value)
{
    return writeItem(__func__, ambaBus(), value, address);
}

int vekAmbaWriteQuad(uint64_t address, uint64_t value)
{
    return writeItem(__func__, ambaBus(), value, address);
}

// ---- CRTC registers and PCI configuration space

int vekCrtcReadByte(uint32_t index, uint8_t* value)
{
    return readItem(__func__, crtcRegisters(), value, index);
}

int vekCrtcWriteByte(uint32_t index, uint8_t value)
{
    return writeItem(__func__, crtcRegisters(), value, index);
}

int vekPciRead(int32_t offset, uint32_t* value)
{
    const int result = answer(__func__, offset);
    const auto found = pci().find(offset);
    deliver(result, value, found == pci().end() ? uint32_t{0} : found->second);
    return result;
}

int vekPciWrite(int32_t offset, uint32_t value)
{
    const int result = answer(__func__, offset, value);
    if (delivers(result)) {
        pci()[offset] = value;
    }
    return result;
}

// ---- I2C

int vekI2cRead(int channel, uint32_t device, uint32_t sub_address, int count, uint8_t* data)
{
    const int result = answer(__func__, channel, device, sub_address, count);
    deliverBytes(result, i2cDevice(), sub_address, data, count);
    return result;
}

int vekI2cWrite(int channel, uint32_t device, uint32_t sub_address, int count, const uint8_t* data)
{
    const int result = answer(__func__, channel, device, sub_address, count, Buffer{data});
    storeBytes(result, i2cDevice(), sub_address, data, count);
    return result;
}

const char* vekI2cErrString(int error)
{
    record(__func__, error);
    return textFor(__func__, outputs().i2c_error_texts, "error", error);
}

// ---- DDC and EDID

int vekDDCRead(int channel, int* length, uint8_t** data, int* valid)
{
    const int result = answer(__func__, channel);
    deliver(result, length, reportedEdidLength());
    deliver(result, data, outputs().edid.data());
    deliver(result, valid, outputs().edid_valid);
    return result;
}

int edid_print_helper(const uint8_t* data, int length, int flag)
{
    if (data != nullptr && length > 0) {
        state().received.printed_edid.assign(data, data + length);
    }
    return answer(__func__, Buffer{data}, length, flag);
}

int do_edid_parse(const char* path)
{
    return answer(__func__, path);
}

// ---- HDMI

int vekHdmiDDCInit(int channel)
{
    return answer(__func__, channel);
}

int vekHdmiDDCRead(int channel, uint8_t slave, uint8_t sub_address, uint8_t* value)
{
    return readItem(__func__, hdmiDdc(), value, sub_address, channel, slave);
}

int vekHdmiDDCWrite(int channel, uint8_t slave, uint8_t sub_address, uint8_t value)
{
    return writeItem(__func__, hdmiDdc(), value, sub_address, channel, slave);
}

int vekHdmiEDIDRead(int channel)
{
    return answer(__func__, channel);
}

int vekHdmiHpdSense(int channel, uint8_t* status)
{
    const int result = answer(__func__, channel);
    deliver(result, status, outputs().hot_plug_status);
    return result;
}

int vekHdmiModeRead(int channel, VekDisplayMode* mode)
{
    const int result = answer(__func__, channel);
    deliverMode(result, mode);
    return result;
}

int vekHdmiPhyStart(int channel)
{
    return answer(__func__, channel);
}

int vekHdmiPhyEnd(int channel)
{
    return answer(__func__, channel);
}

int vekHdmiPhyReset(int channel)
{
    return answer(__func__, channel);
}

int vekHdmiPhyRead(int channel, uint32_t address, uint16_t* value)
{
    return readItem(__func__, hdmiPhy(), value, address, channel);
}

int vekHdmiPhyWrite(int channel, uint32_t address, uint16_t value)
{
    return writeItem(__func__, hdmiPhy(), value, address, channel);
}

// ---- DisplayPort and eDP

int vekDpInit(int channel)
{
    return answer(__func__, channel);
}

int vekDpLinkTraining(int channel)
{
    return answer(__func__, channel);
}

int vekDpCTLCfg(int channel)
{
    return answer(__func__, channel);
}

int vekDpModeRead(int channel, VekDisplayMode* mode)
{
    const int result = answer(__func__, channel);
    deliverMode(result, mode);
    return result;
}

int vekDpAuxRead(int channel, uint32_t address, uint8_t* value)
{
    return readItem(__func__, dpcd(), value, address, channel);
}

int vekDpAuxReadBuf(int channel, uint32_t address, uint8_t* buffer, int count)
{
    const int result = answer(__func__, channel, address, count);
    deliverBytes(result, dpcd(), address, buffer, count);
    return result;
}

int vekDpAuxWrite(int channel, uint32_t address, uint8_t value)
{
    return writeItem(__func__, dpcd(), value, address, channel);
}

int vekDpAuxEdidGet(int channel, uint8_t* buffer, int* length)
{
    const int result = answer(__func__, channel);
    if (delivers(result) && buffer != nullptr) {
        const std::vector<uint8_t>& edid = outputs().edid;
        std::copy_n(edid.begin(), std::min<std::size_t>(edid.size(), VEK_EDID_BUFFER_SIZE), buffer);
    }
    deliver(result, length, reportedEdidLength());
    return result;
}

int vekDpI2cRead(int channel, uint32_t device, uint8_t sub_address, uint8_t* value)
{
    return readItem(__func__, dpI2cDevice(), value, sub_address, channel, device);
}

int vekDpI2cReadBuf(int channel, uint32_t device, uint8_t sub_address, uint8_t* buffer, int count)
{
    const int result = answer(__func__, channel, device, sub_address, count);
    deliverBytes(result, dpI2cDevice(), sub_address, buffer, count);
    return result;
}

int vekDpCdbRead(int channel, uint32_t address, uint16_t* value)
{
    return readItem(__func__, dpCdb(), value, address, channel);
}

int vekDpCdbWrite(int channel, uint32_t address, uint16_t value)
{
    return writeItem(__func__, dpCdb(), value, address, channel);
}

int vekDpPhyRead(int channel, uint32_t address, uint32_t* value)
{
    return readItem(__func__, dpPhy(), value, address, channel);
}

int vekDpPhyWrite(int channel, uint32_t address, uint32_t value)
{
    return writeItem(__func__, dpPhy(), value, address, channel);
}

int vekEdpEnablePwm()
{
    return answer(__func__);
}

int vekEdpPwmSet(int frequency_hz)
{
    return answer(__func__, frequency_hz);
}

int vekEdpLightSet(int percent)
{
    return answer(__func__, percent);
}

int vekEdpSelfTestSet(int channel, uint8_t state_code)
{
    return answer(__func__, channel, state_code);
}

// ---- Display modes and gamma

int vekCrtcModeRead(int channel, VekDisplayMode* mode)
{
    const int result = answer(__func__, channel);
    deliverMode(result, mode);
    return result;
}

int vekCrtcOutputPrint()
{
    return answer(__func__);
}

int vekCrtcGammaSet(const char* setting)
{
    return answer(__func__, setting);
}

int vekVgaSetGain(uint8_t red, uint8_t green, uint8_t blue)
{
    return answer(__func__, red, green, blue);
}

int vekVgaSetSigleGain(int colour, uint8_t gain)
{
    return answer(__func__, colour, gain);
}

// ---- Zoom video

int vekZoomVideoInit(int id, int i2c_channel, int i2c_sa, int layer)
{
    return answer(__func__, id, i2c_channel, i2c_sa, layer);
}

int vekZoomVideoStart(int id, int x, int y, int w, int h, int cut_left, int zoomw, int zoomh, int connector)
{
    return answer(__func__, id, x, y, w, h, cut_left, zoomw, zoomh, connector);
}

int vekZoomVideoStop(int id)
{
    return answer(__func__, id);
}

int vekZoomVideoRestart(int id)
{
    return answer(__func__, id);
}

int vekZoomVideoGetParm(int id, int32_t* x, int32_t* y, int32_t* w, int32_t* h, int32_t* cut_left, int32_t* zoomw,
                        int32_t* zoomh, int32_t* connector, int32_t* camera_w, int32_t* camera_h)
{
    const int result = answer(__func__, id);
    deliverAll(result, outputs().zoom_video, x, y, w, h, cut_left, zoomw, zoomh, connector, camera_w, camera_h);
    return result;
}

// ---- SPI flash

int vekSpiReadBuffer(void* buffer, int address, int size)
{
    const int result = answer(__func__, address, size);
    deliverBytes(result, spiFlash(), static_cast<uint64_t>(address), static_cast<uint8_t*>(buffer), size);
    return result;
}

int vekSpiErase(int address, int size)
{
    return answer(__func__, address, size);
}

int vekSpiProgram(const void* buffer, int address, int size)
{
    const int result = answer(__func__, Buffer{buffer}, address, size);
    storeBytes(result, spiFlash(), static_cast<uint64_t>(address), static_cast<const uint8_t*>(buffer), size);
    return result;
}

int vekSpiProtect()
{
    return answer(__func__);
}

int vekSpiUnprotect()
{
    return answer(__func__);
}

// ---- On-chip sensors

int vekSensorTemp(int sensor, double* celsius)
{
    const int result = answer(__func__, sensor);
    deliver(result, celsius, outputs().temperatures.at(sensor == 0 ? 0 : 1));
    return result;
}

int vekSensorVolt(int sensor, double* volts)
{
    const int result = answer(__func__, sensor);
    deliver(result, volts, outputs().voltages.at(sensor == 0 ? 0 : 1));
    return result;
}

int vekSensorProcess(int kind, int sensor, int* reading)
{
    const int result = answer(__func__, kind, sensor);
    const auto found = outputs().process.find({kind, sensor});
    deliver(result, reading, found == outputs().process.end() ? 0 : found->second);
    return result;
}

// ---- Power monitor chips

int vekLTC2990GetCurrent2(int channel, int address_index, unsigned int rsense1, unsigned int rsense2, float* current1,
                          float* current2, int repeated, int wait_ready)
{
    const int result = answer(__func__, channel, address_index, rsense1, rsense2, repeated, wait_ready);
    deliverAll(result, outputs().ltc2990_currents, current1, current2);
    return result;
}

int vekLTC2990GetVolt4(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, int repeated,
                       int wait_ready)
{
    const int result = answer(__func__, channel, address_index, repeated, wait_ready);
    deliverAll(result, outputs().ltc2990_volts, v1, v2, v3, v4);
    return result;
}

int vekLTC2991GetCurrent4(int channel, int address_index, unsigned int rsense1, unsigned int rsense2,
                          unsigned int rsense3, unsigned int rsense4, float* current1, float* current2, float* current3,
                          float* current4, int repeated, int wait_ready)
{
    const int result =
        answer(__func__, channel, address_index, rsense1, rsense2, rsense3, rsense4, repeated, wait_ready);
    deliverAll(result, outputs().ltc2991_currents, current1, current2, current3, current4);
    return result;
}

int vekLTC2991GetVolt8(int channel, int address_index, float* v1, float* v2, float* v3, float* v4, float* v5, float* v6,
                       float* v7, float* v8, int repeated, int wait_ready)
{
    const int result = answer(__func__, channel, address_index, repeated, wait_ready);
    deliverAll(result, outputs().ltc2991_volts, v1, v2, v3, v4, v5, v6, v7, v8);
    return result;
}

int vekINA3221GetVolt2(int channel, float* millivolts1, float* millivolts2)
{
    const int result = answer(__func__, channel);
    deliverAll(result, outputs().ina3221_millivolts, millivolts1, millivolts2);
    return result;
}

int vekINA3221GetCurrent2(int channel, unsigned int rsense1, unsigned int rsense2, float* current1, float* current2)
{
    const int result = answer(__func__, channel, rsense1, rsense2);
    deliverAll(result, outputs().ina3221_currents, current1, current2);
    return result;
}

// ---- Power, fan, thermal, feature switches

int vekPowerGetState(int* power_state)
{
    const int result = answer(__func__);
    deliver(result, power_state, outputs().power_state);
    return result;
}

int vekPowerSetState(int power_state)
{
    return answer(__func__, power_state);
}

const char* vekPowerStateName(int power_state)
{
    record(__func__, power_state);
    return textFor(__func__, outputs().power_state_names, "state", power_state);
}

int vekFanSetRate(int rate)
{
    return answer(__func__, rate);
}

int vekThermalDebug(int temperature)
{
    return answer(__func__, temperature);
}

int tovira_func(char* text, int repeat)
{
    return answer(__func__, static_cast<const char*>(text), repeat);
}

// ---- Clocks

int vek_qz200_get_freq(int domain)
{
    return record(__func__, domain).value_or(valueOr(outputs().clock_mhz, domain, 0));
}

int vek_qz200_pllcalc(int reference_khz, int mode, uint32_t wanted_khz, uint32_t* setting)
{
    const int result = answer(__func__, reference_khz, mode, wanted_khz);
    deliver(result, setting, outputs().pll_setting);
    return result;
}

int vek_qz200_set_clk_freq(int domain, uint32_t setting)
{
    return answer(__func__, domain, setting);
}

int vek_qz200_set_clk_mode(int mode, int source)
{
    return answer(__func__, mode, source);
}

// ---- Version and information

int vekRvtcoreVer(int* major, int* minor, int* third, int* fourth)
{
    const int result = answer(__func__);
    deliverAll(result, outputs().version, major, minor, third, fourth);
    return result;
}

int vekInfoRead(gpu_info* info)
{
    const int result = answer(__func__);
    deliver(result, info, outputs().info);
    return result;
}

// ---- AXI monitor

int vekMonitorAxiTrans_QZ201()
{
    return answer(__func__);
}

void* vek_thread_qz202monitor(void* folder_name)
{
    record(__func__, static_cast<const char*>(folder_name));
    if (outputs().collector_waits) {
        waitForCancellation();
    }
    return nullptr;
}

// ---- Scripts

int vekRunScript(const char* name)
{
    return answer(__func__, name);
}
