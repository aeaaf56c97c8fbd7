#include "command_lines.h"

#include <algorithm>
#include <sstream>

#include "tovira_parse/command_table.h"
#include "tovira_parse/handlers.h"
#include "vek.h"

namespace faults_test
{
namespace
{

constexpr std::string_view kI2cError = "I2C error: error {}\n";
constexpr std::string_view kDpReadError = "aux read [10] error\n";
constexpr std::string_view kDpRunError = "DP0: phy read [10] error\n";
constexpr std::string_view kVersionError = "get rvtcore version failed with err={}\n";
constexpr std::string_view kDriverTooOld =
    "get rvtcore version failed with err={}\n"
    "To support display of GPU information, the version number must be greater than 1.0.0.0\n";
constexpr std::string_view kInfoError =
    "\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\n"
    "get vram information failed with err={}\n";
constexpr std::string_view kDisplayWithoutVersion =
    "get rvtcore version failed with err={}\n"
    "Press q to exit this command\n"
    "Video Mem (M):                                       ";
constexpr std::string_view kDisplayEndedAtOnce =
    "get rvtcore version failed with err={}\n"
    "Press q to exit this command\n"
    "Video Mem (M):                                       "
    "\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b\n"
    "get vram information failed with err={}\n";

Failure gone(std::string_view function, std::string_view text, int status = kStatusDone)
{
    return {.function = function, .text = text, .status = status};
}

Failure goneThen(std::string_view function, std::string_view text, std::string_view then, int status = kStatusDone)
{
    return {.function = function, .text = text, .status = status, .then = then};
}

Failure returned(std::string_view function)
{
    return {.function = function, .text = "", .sequel = Sequel::kReturnsIt};
}

Failure shown(std::string_view function)
{
    return {.function = function, .text = "", .sequel = Sequel::kShowsAnswer};
}

Failure skipped(std::string_view function, std::string_view text)
{
    return {.function = function, .text = text, .sequel = Sequel::kSkips};
}

Failure goesOn(std::string_view function, std::string_view text)
{
    return {.function = function, .text = text, .sequel = Sequel::kGoesOn};
}

Failure onlyOnCall(int call, Failure failure)
{
    failure.call = call;
    return failure;
}

Failure onlyFor(int result, Failure failure)
{
    failure.result = result;
    return failure;
}

Failure onlyNegative(Failure failure)
{
    failure.failing = Failing::kNegative;
    return failure;
}

Failure onlyDelivered(bool delivered, Failure failure)
{
    failure.delivered = delivered;
    return failure;
}

std::vector<Failure> processFailures(const std::vector<std::string_view>& texts)
{
    std::vector<Failure> failures;
    for (const std::string_view text : texts) {
        const int call = static_cast<int>(failures.size()) + 1;
        failures.push_back(onlyOnCall(call, gone("vekSensorProcess", text, kStatusBadArgument)));
    }
    failures.push_back(gone("get_device_id", ""));
    return failures;
}

std::vector<Example> clockExamples()
{
    std::vector<Example> examples = {
        {"", {shown("vek_qz200_get_freq")}}, {"pll"}, {"bypass 3"}, {"off 3"}, {"on 3"}, {"off"}};
    struct Domain {
        std::string_view shown;
        std::string_view set;
        std::string_view refused;
    };
    for (const Domain& domain :
         {Domain{"axi", "axi 800", "the input axi frequency out of range, please set again\n"},
          Domain{"noc", "noc 800", "the input axi frequency out of range, please set again\n"},
          Domain{"apb", "apb 25", "the input apb frequency out of range, please set again\n"},
          Domain{"pcie", "pcie 800", "the input pcie/vpu frequency out of range, please set again\n"},
          Domain{"vpu", "vpu 800", "the input pcie/vpu frequency out of range, please set again\n"},
          Domain{"3d", "3d 600", "the input 3d core frequency out of range, please set again\n"},
          Domain{"3dsh", "3dsh 600", "the input 3dsh frequency out of range, please set again\n"},
          Domain{"2d", "2d 600", "the input 2d frequency out of range, please set again\n"}}) {
        examples.push_back({domain.shown, {shown("vek_qz200_get_freq")}});
        examples.push_back({domain.set, {gone("vek_qz200_pllcalc", domain.refused), shown("vek_qz200_get_freq")}});
    }
    return examples;
}

std::vector<Family> makeFamilies()
{
    const std::vector<Example> items = {{""}, {"10"}, {"10 5"}};
    const std::vector<Example> runs = {{"10 21"}, {"10 21 saved"}, {"10 3 5a"}, {"10"}};
    std::vector<Family> families = {
        {doHelp, {{""}, {"rrb"}, {"ver"}, {"zz"}}},
        {doQuit, {{""}}},
        {doRun, {{"", {returned("vekRunScript")}}, {"script", {returned("vekRunScript")}}}},
        {doLoad,
         {{"script",
           // The script's commands run in that mode as well.
           {onlyFor(VEK_ACCESS_MEM, goesOn("get_s_type", "")),
            onlyOnCall(1, skipped("get_s_type",
                                  "device error:the cmd does not support the visit mode\n"
                                  "rrb 4:\n")),
            skipped("get_s_type", "device error:the cmd does not support the visit mode\n")}},
          {"missing"}}},
        {doReg, items},
        {doVram, items},
        {doKmem, items},
        {doAmba, items},
        {doPCI, items},
        {doMultReg, runs},
        {doMultVram, runs},
        {doMultKmem, runs},
        {doMultAmba, runs},
        {doCrtcReg, {{""}, {"10"}, {"10 5"}, {"10 21"}, {"10 21 saved"}}},
    };
    const std::vector<Family> display = {
        {.handler = doI2c,
         .examples = {{"set 1 50"},
                      {"rb 10", {goneThen("vekI2cRead", kI2cError, "vekI2cErrString")}},
                      {"wb 10 5", {goneThen("vekI2cWrite", kI2cError, "vekI2cErrString")}},
                      {"rbs 10 14", {goneThen("vekI2cRead", kI2cError, "vekI2cErrString")}},
                      {"rbs 10 14 saved", {goneThen("vekI2cRead", kI2cError, "vekI2cErrString")}},
                      {.arguments = "rb 10", .failed = "vekI2cRead", .failedResult = -121}},
         .before = "i2c set 1 50"},
        {doDDC,
         {{"2 saved",
           {onlyFor(-22, goneThen("vekDDCRead", "DDC 2 for card 3 is not exist\n", "vekGetCard")),
            gone("vekDDCRead", "DDC 2 get edid failed with err={}\n")}},
          {.arguments = "2",
           .failures = {gone("vekGetCard", "DDC 2 for card {} is not exist\n")},
           .failed = "vekDDCRead",
           .failedResult = -22}}},
        {doEdid, {{"parse"}, {"parse image"}, {"show"}}},
        {doHdmi,
         {{"0 phy r 100", {gone("vekHdmiPhyRead", "hdmi 0: phy read [100] error\n")}},
          {"0 phy rs 100 6", {gone("vekHdmiPhyRead", "HDMI0: phy read [100] error\n\n")}},
          {"0 phy w 100 5", {gone("vekHdmiPhyWrite", "hdmi 0: phy write [100] with 0005 error\n")}},
          {"0 phy st", {gone("vekHdmiPhyStart", "hdmi 0:phy config start failed\n")}},
          {"0 phy en", {gone("vekHdmiPhyEnd", "hdmi 0:phy config end failed\n")}},
          {"0 phy re", {gone("vekHdmiPhyReset", "hdmi 0:phy reset failed\n")}},
          {"0 hpd r", {gone("vekHdmiHpdSense", "hdmi 0:hpd read error\n")}},
          {"0 ddc i", {gone("vekHdmiDDCInit", "hdmi 0:DDC init failed\n")}},
          {"0 ddc r 50 10", {gone("vekHdmiDDCRead", "hdmi 0:ddc read [10] error\n")}},
          {"0 ddc w 50 10 5", {gone("vekHdmiDDCWrite", "hdmi 0:ddc write [10] with 0005 error\n")}},
          {"0 edid r", {gone("vekHdmiEDIDRead", "hdmi 0:EDID read failed\n")}},
          {"0 ddc edid r", {gone("vekHdmiEDIDRead", "hdmi 0:EDID read failed\n")}},
          {"0 mode"},
          {"0 phy mode"},
          {"0 foo"}}},
        {doDp,
         {{"0 init"},
          {"0 train"},
          {"0 config"},
          {"0 st 1", {gone("vekEdpSelfTestSet", "eDP set self test mode error\n")}},
          {"0 aux r 10", {gone("vekDpAuxRead", kDpReadError)}},
          {"0 aux rs 10 14", {gone("vekDpAuxReadBuf", "aux read buffer [10@14] error\n")}},
          {"0 aux w 10 5", {gone("vekDpAuxWrite", "aux write [10] with 05 error\n")}},
          {"0 ddc", {gone("vekDpAuxEdidGet", "dp 0 get edid failed with err={}\n")}},
          {"0 i2c r 10", {gone("vekDpI2cRead", "aux i2c read [10] error\n")}},
          {"0 i2c rs 10 14", {gone("vekDpI2cReadBuf", "aux read buffer [10@14] error\n")}},
          {"0 phy r 10", {gone("vekDpPhyRead", kDpReadError)}},
          {"0 phy rs 10 6", {gone("vekDpPhyRead", kDpRunError)}},
          {"0 phy w 10 5", {gone("vekDpPhyWrite", "aux write [10] with 00000005 error\n")}},
          {"0 cdb r 10", {gone("vekDpCdbRead", kDpReadError)}},
          {"0 cdb rs 10 a", {gone("vekDpCdbRead", kDpRunError)}},
          {"0 cdb w 10 5", {gone("vekDpCdbWrite", "aux write [10] with 0005 error\n")}},
          {"0 mode"},
          {"0 foo"}}},
        {doEdp, {{"pwm 5dc"}, {"light 64"}, {"pwmen"}, {"light"}}},
        {doVga, {{"0 r 80"}, {"0 g 80"}, {"0 b 80"}, {"0 c 1 2 3"}, {"0 mode"}, {"5 mode"}}},
        {doDvo, {{"0 mode"}, {"5 mode"}}},
        {doCrtc, {{"output"}, {"gamma 0 br 0.5"}, {"1 mode"}, {"4 mode"}}},
        {.handler = doZV,
         .examples = {{"init 1 0 1 0"},
                      {"start 1 720 576 0 0"},
                      {"start 1"},
                      {"start 0 640"},
                      {"stop 1"},
                      {"restart 1"},
                      {"info 1"},
                      {"foo"}},
         .before = "zv init 1"},
        {doSpi,
         {{"read 10 14 saved", {gone("vekSpiReadBuffer", "")}},
          {"read 10 114", {gone("vekSpiReadBuffer", "")}},
          {"erase 1000 1000"},
          {"program 0 image"},
          {"program 0 missing"},
          {"prot"},
          {"unprot"}}},
        {.handler = doMcu,
         .examples = {{"aux r 100"},
                      {"aux rs 100 13"},
                      {"aux w 100 5"},
                      {"aux ws 100 1 11 22"},
                      {"i2c r 10"},
                      {"i2c rs"},
                      {"i2c rs 0 3"},
                      {"i2c w 10 5"}},
         .waitsForAnswers = true},
    };
    const std::vector<Family> board = {
        {doTemp,
         {{"", {gone("vekSensorTemp", "Sensor {n}: get temprature failed\n", kStatusBadArgument)}},
          {"1", {gone("vekSensorTemp", "Sensor 1: get temprature failed\n", kStatusBadArgument)}}}},
        {doVolt,
         {{"", {gone("vekSensorVolt", "Sensor {n} get voltage failed\n", kStatusBadArgument)}},
          {"1", {gone("vekSensorVolt", "Sensor 1 get voltage failed\n", kStatusBadArgument)}}}},
        {doProcess,
         {{"", processFailures({"Sensor 0 get svt process failed\n", "Sensor 0 get svt process failed\n",
                                "Sensor 0 get lvt process failed\n", "Sensor 0 get lvt process failed\n",
                                "Sensor 0 get ulvt process failed\n", "Sensor 0 get ulvt process failed\n"})},
          {.arguments = "",
           .failures = processFailures({"Sensor 0 get svt process failed\n", "Sensor 0 get lvt process failed\n",
                                        "Sensor 0 get ulvt process failed\n"}),
           .deviceId = 0x202}}},
        {doLtc2990,
         {{"1 0 6 3 3", {gone("vekLTC2990GetCurrent2", "LTC2990: 1:0 get current error ({})\n")}},
          {"1 0 7", {gone("vekLTC2990GetVolt4", "LTC2990: 1:0 get voltage error ({})\n")}},
          {"1 0 5"}}},
        {doLtc2991,
         {{"1 2 1 3 3", {gone("vekLTC2991GetCurrent4", "LTC2991: 1:2 get current error ({})\n")}},
          {"1 2 0", {gone("vekLTC2991GetVolt8", "LTC2991: 1:2 get voltage error ({})\n")}}}},
        {doIna3221,
         {{"2 3 3",
           {goesOn("vekINA3221GetVolt2", "INA3221: 2: get voltage error ({})\n"),
            gone("vekINA3221GetCurrent2", "INA3221: 2: get current error ({})\n")}}}},
        {doPower,
         {{"", {gone("vekPowerGetState", "vekPowerGetState: get power state error ({})\n")}},
          {"2",
           {goneThen("vekPowerSetState", "vekPowerSetState: set power state state 2 error ({})\n",
                     "vekPowerStateName")}}}},
        {doFan, {{"50"}, {"auto"}, {""}}},
        {doThermal, {{"50000"}, {"q"}, {""}}},
        {doFunction, {{"on"}}},
        {doClk, clockExamples()},
    };
    const std::vector<Family> info = {
        {.handler = doVer, .examples = {{"", {gone("vekRvtcoreVer", kVersionError)}}}, .row = "version/ver"},
        {.handler = doVer,
         .examples = {{.arguments = "",
                       .failures = {onlyDelivered(false, gone("vekRvtcoreVer", kDriverTooOld)),
                                    onlyDelivered(true, goesOn("vekRvtcoreVer", kDisplayWithoutVersion)),
                                    gone("vekInfoRead", kInfoError)},
                       .keys = "xxq"},
                      {.arguments = "",
                       .failures = {onlyDelivered(false, gone("vekRvtcoreVer", kDriverTooOld)),
                                    onlyDelivered(true, gone("vekRvtcoreVer", kDisplayEndedAtOnce))},
                       .keys = "q"}},
         .row = "info"},
        {doQuery,
         {{"", {onlyNegative(gone("vekQueryInfo", "", kStatusBadArgument))}},
          {"axi", {onlyNegative(gone("vekQueryInfo", "", kStatusBadArgument))}}}},
        {doCard,
         {{"", {gone("vekGetCard", "current card index: {}\n")}},
          {"1",
           {onlyFor(1, gone("vekGetCard", "set card index: 1\n")), goesOn("vekGetCard", ""),
            onlyDelivered(false, gone("vekQueryInt", "card index 1 is out of range [0, 0). current card index: 3\n",
                                      kStatusBadArgument))}},
          {"9",
           {goneThen("vekGetCard", "card index 9 is out of range [0, 4). current card index: {}\n", "vekQueryInt",
                     kStatusBadArgument),
            onlyDelivered(false, gone("vekQueryInt", "card index 9 is out of range [0, 0). current card index: 3\n",
                                      kStatusBadArgument))}},
          {"3", {goneThen("vekGetCard", "set card index: 3\n", "vekQueryInt vekSetCard")}}}},
        {doDump, {{"vramfree", {returned("vekDumpVramFree")}}, {"foo"}}},
        {doMonitor,
         {{"final", {gone("get_device_id", "Monitor the axi trans final!\n")}},
          {"clear", {gone("get_device_id", "Monitor the axi trans is cleaned!\n")}},
          {"start", {gone("get_device_id", "")}},
          {.arguments = "cycle", .keys = "10\n"},
          {.arguments = "start", .failures = {gone("get_device_id", "")}, .deviceId = 0x202},
          {.arguments = "final",
           .failures = {gone("get_device_id", "Monitor the axi trans final!\n")},
           .deviceId = 0x202},
          {.arguments = "clear",
           .failures = {gone("get_device_id", "Monitor the axi trans is cleaned!\n")},
           .deviceId = 0x202},
          {.arguments = "cycle", .deviceId = 0x202, .keys = "0\n"}}},
    };
    families.insert(families.end(), display.begin(), display.end());
    families.insert(families.end(), board.begin(), board.end());
    families.insert(families.end(), info.begin(), info.end());
    return families;
}

const Family* familyOf(const UtilCmd& row)
{
    static const std::vector<Family> families = makeFamilies();
    const auto found = std::find_if(families.begin(), families.end(), [&row](const Family& family) {
        return family.handler == row.handler && (family.row.empty() || family.row == row.name);
    });
    return found == families.end() ? nullptr : &*found;
}

std::vector<CommandLine> makeLines()
{
    std::vector<CommandLine> lines;
    for (const UtilCmd& row : g_util_cmd) {
        const Family* const family = familyOf(row);
        if (family == nullptr) {
            continue;
        }
        for (const std::string& name : namesOf(row)) {
            for (const Example& example : family->examples) {
                const std::string arguments(example.arguments);
                lines.push_back({&row, family, &example, arguments.empty() ? name : name + ' ' + arguments});
            }
        }
    }
    return lines;
}

}  // namespace

std::vector<std::string> namesOf(const UtilCmd& row)
{
    std::vector<std::string> names;
    std::istringstream all(row.name);
    for (std::string name; std::getline(all, name, '/');) {
        names.push_back(name);
    }
    return names;
}

const std::vector<CommandLine>& commandLines()
{
    static const std::vector<CommandLine> lines = makeLines();
    return lines;
}

}  // namespace faults_test
