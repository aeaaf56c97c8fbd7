// The worked example of docs/serial-protocol.md, byte by byte.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "memory_line.h"
#include "path/driver_path.h"

namespace serial_test
{
namespace
{

Bytes bytesIn(const std::string& text)
{
    Bytes bytes;
    std::istringstream digits(text);
    for (std::string pair; digits >> pair;) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
    }
    return bytes;
}

std::string asText(const Bytes& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02x ", byte);
        text += pair;
    }
    return text.empty() ? text : text.substr(0, text.size() - 1);
}

// Lines that begin with "    > " or "    < ", or with "    | ", which goes on with the line before.
TEST(ProtocolDocument, HasAnExampleThatTheBoardAnswersLikeThat)
{
    struct Exchange {
        std::string request;
        std::string reply;
    };
    std::vector<Exchange> exchanges;
    std::ifstream document(SERIAL_PROTOCOL_DOCUMENT);
    std::string* open = nullptr;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("    > ")) {
            exchanges.push_back({line.substr(6), ""});
            open = &exchanges.back().request;
        } else if (line.starts_with("    < ") && !exchanges.empty()) {
            exchanges.back().reply = line.substr(6);
            open = &exchanges.back().reply;
        } else if (line.starts_with("      ") && open != nullptr) {
            *open += " " + line.substr(6);
        } else {
            open = nullptr;
        }
    }
    EXPECT_EQ(exchanges.size(), 6U);
    Board board(*vek::driverPath(0));
    for (const auto& [request, reply] : exchanges) {
        EXPECT_EQ(asText(board.take(bytesIn(request))), reply) << request;
    }
}

}  // namespace
}  // namespace serial_test
