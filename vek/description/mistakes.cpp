#include "description/mistakes.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

/// More of them help nobody.
constexpr std::size_t kMostEntries = 100;

/// What a terminal shows as it is: a description may come from anywhere.
std::string printable(std::string_view text)
{
    std::string shown(text);
    for (char& character : shown) {
        const auto code = static_cast<unsigned char>(character);
        if (code < ' ' || code >= 0x7f) {
            character = '?';
        }
    }
    return shown;
}

}  // namespace

void Mistakes::add(unsigned line, std::string_view key, std::string_view what, bool warning)
{
    any_ = any_ || !warning;
    if (entries_.size() >= kMostEntries) {
        return;
    }
    std::string text = file_ + ":";
    if (line != 0) {
        text += std::to_string(line) + ":";
    }
    if (!key.empty()) {
        text.append(" ").append(key).append(":");
    }
    text.append(" ").append(what);
    entries_.push_back({line, warning, printable(text)});
}

int Mistakes::result() const
{
    if (!any_) {
        return VEK_OK;
    }
    return unreadable_ ? VEK_IO_ERROR : VEK_BAD_DATA;
}

void Mistakes::tellAll(const DescriptionListener& listener)
{
    std::stable_sort(entries_.begin(), entries_.end(),
                     [](const Entry& left, const Entry& right) { return left.line < right.line; });
    for (const Entry& entry : entries_) {
        listener.tell(listener.context, entry.warning, entry.text.c_str());
    }
}

}  // namespace vek
