#include "observation.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "allocation_failure.h"
#include "console_support.h"

// Nobody waits here, and it is always the same time of the day.
extern "C" int clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* /*request*/, timespec* /*left*/)
{
    return 0;
}

extern "C" unsigned int sleep(unsigned int /*seconds*/)
{
    return 0;
}

extern "C" time_t time(time_t* now)
{
    constexpr time_t kNow = 1'648'717'507;
    if (now != nullptr) {
        *now = kNow;
    }
    return kNow;
}

namespace faults_test
{
namespace
{

using console_test::Outcome;
using recording_vek::Delivery;

constexpr int kFirstClock = 8000;
constexpr std::chrono::seconds kPatience{20};

/** Shown when a line does not come to its end. */
std::array<char, 256> currentRun{};

void reportHang(int /*signal*/)
{
    constexpr char kText[] = "no end of: ";
    [[maybe_unused]] ssize_t ignored = write(STDERR_FILENO, kText, sizeof kText - 1);
    ignored = write(STDERR_FILENO, currentRun.data(), strlen(currentRun.data()));
    ignored = write(STDERR_FILENO, "\n", 1);
    _exit(1);
}

/** Ends the test program, with the name of the line, when the line does not end. */
class Watch
{
public:
    explicit Watch(const std::string& text)
    {
        std::snprintf(currentRun.data(), currentRun.size(), "%s", text.c_str());
        std::signal(SIGALRM, reportHang);
        alarm(static_cast<unsigned>(kPatience.count()));
    }
    ~Watch() { alarm(0); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

int checked(int result, const char* operation)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
    return result;
}

/** Puts a file of these bytes on standard input while it lives. */
class TypedKeys
{
public:
    explicit TypedKeys(std::string_view keys) : saved_(checked(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3), "dup"))
    {
        const int file = checked(memfd_create("keys", MFD_CLOEXEC), "memfd_create");
        checked(static_cast<int>(pwrite(file, keys.data(), keys.size(), 0)), "pwrite");
        checked(dup2(file, STDIN_FILENO), "dup2");
        close(file);
        __fpurge(stdin);
        clearerr(stdin);
    }
    ~TypedKeys()
    {
        dup2(saved_, STDIN_FILENO);
        close(saved_);
        __fpurge(stdin);
        clearerr(stdin);
    }
    TypedKeys(const TypedKeys&) = delete;
    TypedKeys& operator=(const TypedKeys&) = delete;

private:
    int saved_;
};

void setTellingAnswers()
{
    recording_vek::Outputs& outputs = recording_vek::outputs();
    outputs.edid = std::vector<std::uint8_t>(128, 0x5c);
    outputs.display_mode = {148500, 1920, 2008, 2052, 2200, 1080, 1084, 1089, 1125, 5};
    outputs.hot_plug_status = 7;
    outputs.zoom_video = {11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
    outputs.temperatures = {41.25, 42.5};
    outputs.voltages = {0.875, 0.925};
    for (const int kind : {VEK_PROCESS_SVT, VEK_PROCESS_LVT, VEK_PROCESS_ULVT}) {
        outputs.process[{kind, 0}] = 100 * kind;
        outputs.process[{kind, 1}] = 100 * kind + 1;
    }
    outputs.ltc2990_currents = {1.5, 2.5};
    outputs.ltc2990_volts = {1.25, 2.25, 3.25, 4.25};
    outputs.ltc2991_currents = {1.5, 2.5, 3.5, 4.5};
    outputs.ltc2991_volts = {1.25, 2.25, 3.25, 4.25, 5.25, 6.25, 7.25, 8.25};
    outputs.ina3221_currents = {1.5, 2.5};
    outputs.ina3221_millivolts = {12000, 5000};
    outputs.power_state = 1;
    for (int domain = VEK_CLOCK_AXI; domain <= VEK_CLOCK_DDR; ++domain) {
        outputs.clock_mhz[domain] = kFirstClock + domain;
    }
    outputs.pll_setting = 0x1234;
    outputs.version = {1, 2, 3, 4};
    outputs.info = {0, 100, 200, 300};
    outputs.selected_card = 3;
    outputs.query_values[VEK_QUERY_CARD_COUNT] = 4;
    outputs.query_report = "axi frequency: 1000\n";
}

void fillMemories()
{
    for (recording_vek::SparseMemory* const memory :
         {&recording_vek::registers(), &recording_vek::videoMemory(), &recording_vek::kernelMemory(),
          &recording_vek::ambaBus(), &recording_vek::crtcRegisters(), &recording_vek::i2cDevice(),
          &recording_vek::hdmiDdc(), &recording_vek::hdmiPhy(), &recording_vek::dpcd(), &recording_vek::dpI2cDevice(),
          &recording_vek::dpCdb(), &recording_vek::dpPhy(), &recording_vek::spiFlash()}) {
        memory->showPattern();
    }
    recording_vek::pci()[0x10] = 0xe0000000;
}

constexpr std::uint64_t kMcuSignature = 0x3ff00;
constexpr std::uint64_t kMcuStatus = 0x3ff12;
constexpr std::uint64_t kMcuCaughtBytes = 0x3ff18;
constexpr std::uint64_t kMcuCompletion = 0x3ff1c;

/** The firmware runs, has nothing to complete and nothing to complain of, and catches 20 bytes. */
void startMcu()
{
    recording_vek::registers().poke<std::uint32_t>(kMcuSignature, 0xdeadbeef);
    recording_vek::registers().poke<std::uint8_t>(kMcuStatus, 0);
    recording_vek::registers().poke<std::uint8_t>(kMcuCaughtBytes, 20);
    recording_vek::registers().poke<std::uint32_t>(kMcuCompletion, 0);
}

/** The microcontroller completes what it is rung for. */
void answerRing(const std::string& call)
{
    if (call == "vekRegWriteByte(0x3ff13, 0xaa)") {
        recording_vek::registers().poke<std::uint32_t>(kMcuCompletion, 0x55aa55aa);
    }
}

void prepareLibrary(const CommandLine& line, Answers answers)
{
    recording_vek::reset();
    if (answers == Answers::kTelling) {
        setTellingAnswers();
        fillMemories();
        startMcu();
    } else {
        recording_vek::outputs().edid_valid = 0;
    }
    recording_vek::setDeviceId(line.example->deviceId);
    if (!line.example->failed.empty()) {
        recording_vek::setResult(std::string(line.example->failed), line.example->failedResult);
    }
}

void apply(const Fault& fault)
{
    if (fault.nullText) {
        recording_vek::setNullText(fault.function);
    } else if (fault.call == 0) {
        recording_vek::setResult(fault.function, fault.result);
    } else {
        recording_vek::setResultOnCall(fault.function, fault.call, fault.result);
    }
    if (fault.delivery) {
        recording_vek::setDeliveryOnCall(fault.function, fault.call, *fault.delivery);
    }
}

CmdHandler poisonedHandler = nullptr;
unsigned char poison = 0;

/** Leaves the bytes on the stack, below the caller, where the frames of what it calls next are going to be. */
[[gnu::noinline]] void poisonStack()
{
    constexpr std::size_t kSize = 0x6000;
    std::array<unsigned char, kSize> bytes;
    memset(bytes.data(), poison, bytes.size());
    asm volatile("" : : "r"(bytes.data()) : "memory");  // the bytes count, whoever sees them
}

int callPoisoned(char* text, int repeat)
{
    const console_test::AllocationFill fill(poison);
    poisonStack();
    return poisonedHandler(text, repeat);
}

bool startsCollector(const CommandLine& line)
{
    return line.example->deviceId == VEK_DEVICE_QZ202 && line.example->arguments == "start";
}

Outcome runBy(Runner runner, const CommandLine& line)
{
    if (runner == Runner::kDispatcher) {
        return console_test::runLine(line.text);
    }
    poisonedHandler = line.row->handler;
    return console_test::call(callPoisoned, line.text, runner == Runner::kRepeat ? 1 : 0);
}

std::optional<std::string> takeSaved()
{
    for (const char* name : {"saved", "SAVED", "5A", "5a"}) {
        if (std::filesystem::exists(name)) {
            std::string contents = console_test::readFile(name);
            std::filesystem::remove(name);
            return contents;
        }
    }
    return std::nullopt;
}

/** Has the handler remember what it goes by. */
void runBefore(const CommandLine& line, Answers answers, Runner runner)
{
    if (line.family->before.empty() && runner != Runner::kRepeat) {
        return;
    }
    prepareLibrary(line, answers);
    recording_vek::setOnCall(answerRing);
    if (!line.family->before.empty()) {
        console_test::call(line.row->handler, std::string(line.family->before));
    }
    if (runner == Runner::kRepeat) {
        const TypedKeys keys(line.example->keys);
        console_test::call(line.row->handler, line.text);
        takeSaved();
    }
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Fault& fault)
{
    stream << fault.function << ", call " << fault.call << ": " << fault.result;
    if (fault.delivery) {
        stream << (*fault.delivery == Delivery::kAlways ? " with its outputs" : " without its outputs");
    }
    return stream << (fault.nullText ? " without a text" : "");
}

std::ostream& operator<<(std::ostream& stream, const Observation& seen)
{
    stream << "status " << seen.status << ", output " << testing::PrintToString(seen.output) << ", error "
           << testing::PrintToString(seen.error) << ", calls " << testing::PrintToString(seen.calls);
    return seen.saved ? stream << ", saved " << testing::PrintToString(*seen.saved) : stream;
}

Observation observe(const CommandLine& line, const Conditions& conditions, const std::optional<Fault>& fault)
{
    const Watch watch(line.text + (fault ? " while " + fault->function + " fails" : ""));
    runBefore(line, conditions.answers, conditions.runner);
    prepareLibrary(line, conditions.answers);
    if (fault) {
        apply(*fault);
    }
    Observation seen;
    recording_vek::setOnCall([&seen](const std::string& call) {
        answerRing(call);
        if (!call.starts_with("vek_thread")) {
            std::fflush(stdout);
            seen.printedBefore.push_back(static_cast<std::size_t>(lseek(STDOUT_FILENO, 0, SEEK_CUR)));
        }
    });
    poison = conditions.poison;
    const TypedKeys keys(line.example->keys);
    const Outcome outcome = runBy(conditions.runner, line);
    // The collector is cancelled, but nobody waits for it.
    if (startsCollector(line) && outcome.output.find("collected") != std::string::npos &&
        !recording_vek::waitForCancelledCollector(kPatience)) {
        throw std::runtime_error("the collector goes on");
    }
    recording_vek::setOnCall(nullptr);
    seen.status = outcome.status;
    seen.output = outcome.output;
    seen.error = outcome.error;
    seen.calls = recording_vek::calls();
    seen.saved = takeSaved();
    return seen;
}

Observation observeWithoutMemory(const CommandLine& line, int number, bool& refused)
{
    const Watch watch(line.text + " without memory");
    runBefore(line, Answers::kTelling, Runner::kHandler);
    prepareLibrary(line, Answers::kTelling);
    recording_vek::setOnCall(answerRing);
    const TypedKeys keys(line.example->keys);
    Observation seen;
    {
        const console_test::RefusedAllocation refusal(number);
        const Outcome outcome = console_test::call(line.row->handler, line.text);
        refused = console_test::RefusedAllocation::happened();
        seen.status = outcome.status;
        seen.output = outcome.output;
        seen.error = outcome.error;
    }
    if (startsCollector(line) && seen.output.find("collected") != std::string::npos) {
        recording_vek::waitForCancelledCollector(kPatience);
    }
    recording_vek::setOnCall(nullptr);
    seen.calls = recording_vek::calls();
    seen.saved = takeSaved();
    return seen;
}

void writeInputFiles()
{
    console_test::writeFile("script", "rrb 0\nrrb 4\n");
    console_test::writeFile("image", "an image");
}

std::string functionOf(const std::string& call)
{
    return call.substr(0, call.find('('));
}

int clockAnswer(const std::string& call)
{
    return kFirstClock + std::stoi(call.substr(call.find('(') + 1));
}

}  // namespace faults_test
