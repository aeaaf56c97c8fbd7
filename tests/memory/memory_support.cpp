#include "memory_support.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace memory_test
{
namespace
{

std::string padded(int digits, std::uint64_t number)
{
    std::array<char, 20> text{};
    std::snprintf(text.data(), text.size(), "%0*lx", digits, number);
    return text.data();
}

std::string digitsOf(const Width& width, std::uint64_t value)
{
    if (width.size == kQuad.size) {
        return padded(8, value & 0xffffffff) + ' ' + padded(8, value >> 32);
    }
    return padded(static_cast<int>(2 * width.size), value);
}

std::string characterOf(char byte)
{
    return std::string(1, byte >= 0x20 && byte < 0x7f ? byte : '.');
}

/** A line of a dump. The bytes stand from column 10 on, on top of a label that is longer than that; where such a label
    ends behind them, so does the line. */
std::string dumpLine(std::uint64_t address, const std::string& contents)
{
    constexpr std::size_t kFirstByte = 10;
    constexpr std::size_t kFieldLength = 58;
    const std::string label = padded(8, address) + ": ";
    const std::size_t end = kFirstByte + 3 * contents.size();
    std::string field = label;
    field.resize(label.size() > end ? label.size() : kFieldLength, ' ');
    std::string characters;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        const std::string digits = padded(2, static_cast<unsigned char>(contents[i])) + ' ';
        std::copy(digits.begin(), digits.end(), field.begin() + static_cast<std::ptrdiff_t>(kFirstByte + 3 * i));
        characters += characterOf(contents[i]);
    }
    if (end < label.size()) {
        field[end] = ' ';
    }
    return field + '\t' + characters + '\n';
}

}  // namespace

std::string Commands::readCall(std::uint64_t address) const
{
    return readFunction() + "(0x" + hex(address) + ')';
}

std::string Commands::writeCall(std::uint64_t address, std::uint64_t value) const
{
    return writeFunction() + "(0x" + hex(address) + ", 0x" + hex(value) + ')';
}

Lines Commands::readCalls(std::uint64_t start, std::size_t count) const
{
    Lines calls;
    for (std::size_t i = 0; i < count; ++i) {
        calls.push_back(readCall(start + i * width.size));
    }
    return calls;
}

Lines Commands::writeCalls(std::uint64_t start, std::size_t count, std::uint64_t value) const
{
    Lines calls;
    for (std::size_t i = 0; i < count; ++i) {
        calls.push_back(writeCall(start + i * width.size, value));
    }
    return calls;
}

std::string Commands::item(std::uint64_t address, std::uint64_t value) const
{
    return padded(family.labelDigits, address) + ": " + digitsOf(width, value) + '\n';
}

std::string Commands::run(std::uint64_t start, std::size_t count) const
{
    std::vector<std::uint64_t> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(peek(start + i * width.size));
    }
    return runOf(start, values);
}

std::string Commands::runOf(std::uint64_t start, const std::vector<std::uint64_t>& values) const
{
    if (width.size == kByte.size) {
        std::string contents;
        std::transform(values.begin(), values.end(), std::back_inserter(contents),
                       [](std::uint64_t value) { return static_cast<char>(value); });
        return dump(start, contents) + '\n';
    }
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % width.itemsPerLine == 0) {
            text += i == 0 ? "" : "\n";
            text += padded(family.labelDigits, start + i * width.size) + ':';
        }
        text += ' ';
        text += digitsOf(width, values[i]);
    }
    return text + '\n';
}

std::string Commands::contents(std::uint64_t start, std::size_t size) const
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += family.memory().peek<char>(start + i);
    }
    return text;
}

std::uint64_t Commands::truncated(std::uint64_t value) const
{
    return width.size == kQuad.size ? value : value & ((std::uint64_t{1} << 8 * width.size) - 1);
}

std::uint64_t Commands::peek(std::uint64_t address) const
{
    return truncated(family.memory().peek<std::uint64_t>(address));
}

void PrintTo(const Commands& commands, std::ostream* stream)
{
    *stream << commands.family.name << commands.width.name;
}

std::string commandsName(const ::testing::TestParamInfo<Commands>& info)
{
    return std::string(info.param.family.name) + info.param.width.name;
}

std::vector<Commands> allCommands()
{
    std::vector<Commands> all;
    for (const Family& family : {kVideo, kKernel, kAmba}) {
        for (const Width& width : {kByte, kWord, kLong, kQuad}) {
            all.push_back({family, width});
        }
    }
    return all;
}

std::vector<Commands> itemRunCommands()
{
    std::vector<Commands> all = allCommands();
    std::erase_if(all, [](const Commands& each) { return each.readFunction() == "vekVramReadLong"; });
    return all;
}

std::vector<Commands> savedRunCommands()
{
    std::vector<Commands> all = itemRunCommands();
    std::erase_if(all, [](const Commands& each) { return each.family.letter == kKernel.letter; });
    return all;
}

std::string hex(std::uint64_t number)
{
    return padded(1, number);
}

std::string dump(std::uint64_t address, const std::string& contents)
{
    constexpr std::size_t kLine = 16;
    std::string text;
    for (std::size_t i = 0; i < contents.size(); i += kLine) {
        text += dumpLine(address + i, contents.substr(i, kLine));
    }
    return text;
}

void fillWithPattern(recording_vek::SparseMemory& memory, std::uint64_t start, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        memory.poke(start + i, static_cast<std::uint8_t>(0x8f + 0x65 * i));
    }
}

}  // namespace memory_test
