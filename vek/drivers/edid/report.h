#ifndef VEK_DRIVERS_EDID_REPORT_H
#define VEK_DRIVERS_EDID_REPORT_H

#include <array>
#include <cstddef>
#include <cstdio>
#include <span>

#include "drivers/edid/bytes.h"
#include "drivers/edid/timing.h"

namespace vek::edid
{

/// The text that an EDID is decoded to: one fact a line, groups indented, and what is wrong gathered for the end.
class Report
{
public:
    static constexpr std::size_t kMaxFindings = 64;
    static constexpr std::size_t kFindingLength = 112;  ///< Of one finding's text, the terminating zero included.

    explicit Report(std::FILE* out) : out_(out) {}
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    /// Starts a line at the present indentation. The caller prints its text and the newline.
    std::FILE* line();

    /// Continues a line that line() started.
    std::FILE* stream() { return out_; }

    /// Prints a whole line.
    void line(const char* text);

    /// Prints the name of each bit that is set, a line each, the lowest bit first; bits without a name are left out.
    void flags(unsigned value, std::span<const char* const> names);

    /// Prints bytes in hexadecimal, 16 a line.
    void dump(Bytes bytes);

    /// Prints bytes as text between quotes, those that are not printable ASCII as "\xNN".
    void quoted(Bytes text);

    /// Prints a timing in one line: resolution, refresh rate, picture ratio, horizontal rate and pixel clock.
    /// @param name what stands before it @param note what stands after it in parentheses, null for nothing
    void timing(const char* name, const Timing& timing, const char* note = nullptr);

    /// Prints the parts of a timing's lines and frames, below its timing().
    void timingParts(const Timing& timing, bool withVerticalPolarity = true);

    /// Names the block that the findings which follow are about, counted from 0.
    void setBlock(std::size_t block) { block_ = block; }

    /// Keeps an error or oddity for the end.
    void finding(const char* text);

    /// Keeps an error or oddity for the end. @return where to print its text, kFindingLength bytes
    char* finding();

    /// Prints the findings, or that there are none.
    void printFindings();

private:
    friend class Group;

    struct Finding {
        std::size_t block;
        std::array<char, kFindingLength> text;
    };

    void axis(const char* name, const Axis& axis, bool withPolarity);

    std::FILE* out_;
    int depth_ = 0;
    std::size_t block_ = 0;
    std::size_t findingCount_ = 0;
    std::array<Finding, kMaxFindings> findings_;
    std::array<char, kFindingLength> unkept_;
};

/// Indents what is reported while it lives.
class Group
{
public:
    explicit Group(Report& report) : report_(report) { ++report_.depth_; }

    /// Starts with a heading.
    Group(Report& report, const char* heading) : report_(report)
    {
        std::fprintf(report_.line(), "%s:\n", heading);
        ++report_.depth_;
    }

    ~Group() { --report_.depth_; }
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

private:
    Report& report_;
};

}  // namespace vek::edid

#endif
