#include "drivers/edid/report.h"

namespace vek::edid
{

std::FILE* Report::line()
{
    constexpr int kIndent = 2;
    std::fprintf(out_, "%*s", depth_ * kIndent, "");
    return out_;
}

void Report::line(const char* text)
{
    std::fprintf(line(), "%s\n", text);
}

void Report::flags(unsigned value, std::span<const char* const> names)
{
    for (const char* const name : names) {
        if ((value & 1) != 0 && name != nullptr) {
            line(name);
        }
        value >>= 1;
    }
}

void Report::dump(Bytes bytes)
{
    constexpr std::size_t kBytesPerLine = 16;
    for (std::size_t start = 0; start < bytes.size(); start += kBytesPerLine) {
        const Bytes row = bytes.part(start, kBytesPerLine);
        line();
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::fprintf(out_, i == 0 ? "%02x" : " %02x", row.at(i));
        }
        std::fputc('\n', out_);
    }
}

void Report::quoted(Bytes text)
{
    constexpr unsigned kFirstPrintable = 0x20;
    constexpr unsigned kLastPrintable = 0x7E;
    std::fputc('\'', out_);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned character = text.at(i);
        if (character >= kFirstPrintable && character <= kLastPrintable) {
            std::fputc(static_cast<int>(character), out_);
        } else {
            std::fprintf(out_, "\\x%02x", character);
        }
    }
    std::fputc('\'', out_);
}

void Report::timing(const char* name, const Timing& timing, const char* note)
{
    const Ratio ratio = pictureRatio(timing);
    std::fprintf(line(), "%s: %dx%d%s  %.3f Hz  %d:%d  %.3f kHz  %.3f MHz", name, timing.horizontal.active,
                 frameHeight(timing), timing.scan == Scan::kProgressive ? "" : "i", refreshRateHz(timing), ratio.width,
                 ratio.height, horizontalRateKhz(timing), static_cast<double>(timing.clockKhz) / 1000.0);
    if (timing.reducedBlanking) {
        std::fputs("  (reduced blanking)", out_);
    }
    if (note != nullptr) {
        std::fprintf(out_, "  (%s)", note);
    }
    std::fputc('\n', out_);
}

void Report::axis(const char* name, const Axis& axis, bool withPolarity)
{
    std::fprintf(line(), "%s: active %d, front porch %d, sync %d, back porch %d, border %d, total %d", name,
                 axis.active, axis.frontPorch, axis.sync, axis.backPorch, axis.border, axis.total());
    if (withPolarity) {
        std::fprintf(out_, ", %s sync", axis.positiveSync ? "positive" : "negative");
    }
    std::fputc('\n', out_);
}

void Report::timingParts(const Timing& timing, bool withVerticalPolarity)
{
    const Group group(*this);
    axis("Horizontal", timing.horizontal, true);
    axis(timing.scan == Scan::kProgressive ? "Vertical" : "Vertical of a field", timing.vertical, withVerticalPolarity);
    if (timing.scan == Scan::kInterlaced) {
        line("Interlaced: half a line more in each field");
    } else if (timing.scan == Scan::kEqualFields) {
        line("Interlaced: both fields alike");
    }
}

void Report::finding(const char* text)
{
    std::snprintf(finding(), kFindingLength, "%s", text);
}

char* Report::finding()
{
    if (findingCount_ >= kMaxFindings) {
        ++findingCount_;
        return unkept_.data();
    }
    Finding& kept = findings_[findingCount_++];
    kept.block = block_;
    return kept.text.data();
}

void Report::printFindings()
{
    if (findingCount_ == 0) {
        line("Errors and oddities: none");
        return;
    }
    const Group group(*this, "Errors and oddities");
    const std::size_t kept = std::min(findingCount_, kMaxFindings);
    for (std::size_t i = 0; i < kept; ++i) {
        std::fprintf(line(), "Block %zu: %s\n", findings_[i].block, findings_[i].text.data());
    }
    if (findingCount_ > kept) {
        std::fprintf(line(), "%zu more\n", findingCount_ - kept);
    }
}

}  // namespace vek::edid
