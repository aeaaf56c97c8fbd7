#ifndef VEK_DESCRIPTION_MISTAKES_H
#define VEK_DESCRIPTION_MISTAKES_H

#include <string>
#include <string_view>
#include <vector>

#include "description/reader.h"

namespace vek
{

/// What is wrong in a description, collected while it is read and told by rising line numbers.
class Mistakes
{
public:
    /// `file`: the description's name as the user gave it.
    explicit Mistakes(std::string_view file) : file_(file) {}

    /// A mistake in a line, 0 for the file as a whole. `key` is empty where there is none.
    void add(unsigned line, std::string_view key, std::string_view what) { add(line, key, what, false); }

    /// Something that is allowed, but may not be meant.
    void warn(unsigned line, std::string_view key, std::string_view what) { add(line, key, what, true); }

    /// A file that a key names, or the description itself, cannot be read.
    void addUnreadable(unsigned line, std::string_view key, std::string_view what)
    {
        unreadable_ = true;
        add(line, key, what);
    }

    bool any() const { return any_; }

    /// VEK_OK, or the result that the mistakes lead to.
    int result() const;

    void tellAll(const DescriptionListener& listener);

private:
    struct Entry {
        unsigned line;
        bool warning;
        std::string text;
    };

    void add(unsigned line, std::string_view key, std::string_view what, bool warning);

    std::string file_;
    std::vector<Entry> entries_;
    bool any_ = false;
    bool unreadable_ = false;
};

}  // namespace vek

#endif
