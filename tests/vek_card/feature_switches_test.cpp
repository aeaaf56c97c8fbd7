#include "drivers/feature_switches.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "card/feature_registers.h"
#include "fake_registers.h"

namespace
{

using vek::FeatureRegisters;

class Features : public ::testing::Test
{
protected:
    /// Runs a command; its result is in `result`. @return what it prints.
    std::string run(const char* text, vek::AddressSpace& registers)
    {
        char* printed = nullptr;
        std::size_t length = 0;
        std::FILE* out = open_memstream(&printed, &length);
        result = vek::runFeatureCommand(registers, text, out);
        std::fclose(out);
        std::string all(printed, length);
        std::free(printed);
        return all;
    }

    std::string run(const std::string& text) { return run(text.c_str(), features); }

    std::uint64_t readLong(std::uint64_t address) { return features.read(address, 4).value; }

    FeatureRegisters features;
    int result = VEK_OK;
};

constexpr char kNothingOpen[] = "func: no function is open\n";

TEST_F(Features, OpenTracesByNumberOrNameInAnyCase)
{
    const char* const names[] = {"RVT_GL_TRACE", "RVT_GLX_TRACE", "RVT_ES_TRACE", "RVT_EGL_TRACE"};
    for (std::size_t n = 0; n < 4; ++n) {
        const std::string said = "func 3D: " + std::string(names[n]) + " on\n";
        std::string lower = names[n];
        for (char& character : lower) {
            character = static_cast<char>(std::tolower(character));
        }
        for (const std::string& word : {std::to_string(n + 1), std::string(names[n]), lower}) {
            run("func close");
            EXPECT_EQ(run("func 3d " + word), said);
            EXPECT_EQ(result, VEK_OK);
            EXPECT_EQ(run("FUNC ON"), said);
            EXPECT_EQ(readLong(0x000), 1U << n);
        }
    }
}

TEST_F(Features, OpenSeveralTracesAtOnce)
{
    EXPECT_EQ(run("func 3D 4,1"), "func 3D: RVT_EGL_TRACE on\nfunc 3D: RVT_GL_TRACE on\n");
    EXPECT_EQ(run("func 3D 1"), "func 3D: RVT_GL_TRACE on\n");
    EXPECT_EQ(run("func texture"), "func Texture: on\n");
    EXPECT_EQ(run("func on"), "func 3D: RVT_GL_TRACE on\nfunc 3D: RVT_EGL_TRACE on\nfunc Texture: on\n");
    EXPECT_EQ(readLong(0x000), 0x19U);
}

TEST_F(Features, ExcludeTheModesOfSeveralGpus)
{
    for (const auto& [words, said] : {std::pair{"1", "Combined"},
                                      {"combined", "Combined"},
                                      {"2", "Independent for 1"},
                                      {"2 4", "Independent for 4"},
                                      {"INDEPENDENT\t3\r\n", "Independent for 3"},
                                      {"3", "Balance"},
                                      {"Balance", "Balance"}}) {
        const std::string line = "func Mgpu: " + std::string(said) + "\n";
        EXPECT_EQ(run("func mgpu " + std::string(words)), line);
        EXPECT_EQ(result, VEK_OK);
        EXPECT_EQ(run("func on"), line);
    }
    run("func mgpu 2 4");
    EXPECT_EQ(readLong(0x004), 0x402U);
}

TEST_F(Features, CloseAllAtOnce)
{
    run("func 3d 1 2 3 4");
    run("func texture");
    run("func mgpu 2 3");
    EXPECT_EQ(run("func close"), "func: all functions are closed\n");
    EXPECT_EQ(run("func on"), kNothingOpen);
    EXPECT_EQ(readLong(0x000), 0U);
    EXPECT_EQ(readLong(0x004), 0U);
}

TEST_F(Features, SayWhatCanBeChosen)
{
    const std::string traces = "func 3D: 1.RVT_GL_TRACE 2.RVT_GLX_TRACE 3.RVT_ES_TRACE 4.RVT_EGL_TRACE\n";
    const std::string modes = "func Mgpu: 1.Combined 2.Independent for n (1 to 4) 3.Balance\n";
    const std::string all =
        traces + "func Texture\n" + modes + "func On: view open functions\nfunc close: close all functions\n";
    EXPECT_EQ(run("func 3d"), traces);
    EXPECT_EQ(run("func mgpu"), modes);
    for (const char* bare : {"func", "func ", " func\r\n", "", ",, \t"}) {
        EXPECT_EQ(run(bare), all) << bare;
        EXPECT_EQ(result, VEK_OK);
    }
    EXPECT_EQ(run("func on"), kNothingOpen);
}

TEST_F(Features, NameWhatTheyDoNotKnow)
{
    for (const auto& [command, said] :
         {std::pair{"func foo", "func: unknown \"foo\"\n"},
          {"func 3", "func: unknown \"3\"\n"},
          {"func 3dd 1", "func: unknown \"3dd\"\n"},
          {"func 3d 0", "func 3D: unknown \"0\"\n"},
          {"func 3d 5", "func 3D: unknown \"5\"\n"},
          {"func 3d 11", "func 3D: unknown \"11\"\n"},
          {"func 3d RVT_GL", "func 3D: unknown \"RVT_GL\"\n"},
          {"func mgpu 4", "func Mgpu: unknown \"4\"\n"},
          {"func mgpu 2 0", "func Mgpu: unknown \"0\"\n"},
          {"func mgpu 2 5", "func Mgpu: unknown \"5\"\n"},
          {"func mgpu 2 99999999999999999999", "func Mgpu: unknown \"99999999999999999999\"\n"},
          {"func mgpu 2 -1", "func Mgpu: unknown \"-1\"\n"}}) {
        EXPECT_EQ(run(command), said);
        EXPECT_EQ(result, VEK_BAD_ARGUMENT) << command;
    }
    EXPECT_EQ(run("func on"), kNothingOpen);
    EXPECT_EQ(run("func 3d 2 x 3"), "func 3D: RVT_GLX_TRACE on\nfunc 3D: unknown \"x\"\n");
    EXPECT_EQ(readLong(0x000), 2U);
}

TEST_F(Features, PrintNothingOfATextThatCouldHarmATerminal)
{
    EXPECT_EQ(run("func \x1b[2J\x07\x80\xff\x7f"), "func: unknown \".[2J....\"\n");
    EXPECT_EQ(run("func " + std::string(100'000, 'x')), "func: unknown \"" + std::string(32, 'x') + "...\"\n");
    EXPECT_EQ(run(std::string(100'000, ' ') + "func on"), kNothingOpen);
    EXPECT_EQ(run("func %s%n"), "func: unknown \"%s%n\"\n");
}

TEST_F(Features, HaveRegistersOfLongs)
{
    for (const std::uint64_t address : {0x000U, 0x004U, 0x008U, 0x0fcU}) {
        EXPECT_EQ(features.write(address, 4, 0xffff'ffff), VEK_OK);
    }
    EXPECT_EQ(readLong(0x000), 0x1fU);
    EXPECT_EQ(readLong(0x004), 0x703U);
    EXPECT_EQ(readLong(0x008), 0U);
    EXPECT_EQ(readLong(0x0fc), 0U);
    for (const unsigned width : {1U, 2U, 8U}) {
        EXPECT_EQ(features.read(0, width).result, VEK_NO_RESPONSE);
        EXPECT_EQ(features.write(0, width, 0), VEK_NO_RESPONSE);
    }
    EXPECT_EQ(features.read(0x100, 4).result, VEK_NO_RESPONSE);
    EXPECT_EQ(features.write(2, 4, 0), VEK_NO_RESPONSE);
}

TEST_F(Features, SayNothingWhenARegisterFails)
{
    for (const std::uint64_t address : {0x000U, 0x004U}) {
        FakeRegisters registers;
        registers.failing = {address};
        for (const char* command : {"func on", "func close", address == 0 ? "func 3d 1" : "func mgpu 1",
                                    address == 0 ? "func texture" : "func mgpu 2"}) {
            EXPECT_EQ(run(command, registers), "") << command;
            EXPECT_EQ(result, VEK_IO_ERROR);
        }
    }
}

}  // namespace
