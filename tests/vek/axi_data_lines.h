/**
 * @file axi_data_lines.h
 * Reads the data files of the AXI monitor.
 */
#ifndef AXI_DATA_LINES_H
#define AXI_DATA_LINES_H

#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

/** One line of a data file. */
struct AxiDataLine {
    std::string time;
    std::string master;
    uint64_t reads;
    uint64_t writes;
    uint64_t bytes;
    double latency;
};

/** @return the lines of a data file behind its first one; a line that is not complete and well formed fails the test.
 */
inline std::vector<AxiDataLine> axiDataLines(const std::string& text)
{
    static const std::regex kLine(
        R"((\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z),([a-z0-9]+),(\d+),(\d+),(\d+),(\d+\.\d))");
    EXPECT_TRUE(text.empty() || text.back() == '\n') << text;
    std::istringstream stream(text);
    std::string line;
    if (std::getline(stream, line)) {
        EXPECT_EQ(line, "time,master,reads,writes,bytes,latency");
    }
    std::vector<AxiDataLine> lines;
    while (std::getline(stream, line)) {
        std::smatch parts;
        EXPECT_TRUE(std::regex_match(line, parts, kLine)) << line;
        if (parts.size() == 7) {
            lines.push_back({parts[1], parts[2], std::stoull(parts[3]), std::stoull(parts[4]), std::stoull(parts[5]),
                             std::stod(parts[6])});
        }
    }
    return lines;
}

#endif
