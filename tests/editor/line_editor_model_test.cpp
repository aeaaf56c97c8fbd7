// The line editor against a second reading of its rules, over random keys: every byte printed, every line returned, and
// for printable lines what the user sees.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "editor_model.h"
#include "editor_session.h"
#include "screen.h"

namespace
{

/** How often each kind of input comes, relative to the others. */
struct Weights {
    double letter; /**< of a small alphabet, so that lines become equal or the beginnings of others */
    double enter;
    double vertical; /**< Up and Down */
    double sideways; /**< Left, Right, Home, End */
    double erase;
    double fragment; /**< pieces of escape sequences */
    double anyByte;
    double noByte;
    double controlC;
    double burst; /**< a few hundred characters in a row */
};

constexpr Weights kMixed{30, 8, 24, 20, 8, 6, 3, 1, 0.1, 0.05};
constexpr Weights kPrintable{40, 8, 20, 20, 8, 0, 0, 0, 0, 0.1};
constexpr Weights kManyLines{30, 25, 30, 4, 4, 1, 0, 0, 0.05, 0};
constexpr Weights kLongLines{20, 1.5, 6, 30, 8, 1, 4, 0, 0, 3};
constexpr Weights kSequences{10, 3, 4, 4, 4, 60, 3, 1, 1, 0};
constexpr Weights kAllBytes{0, 1, 3, 2, 0, 1, 93, 0, 0, 0};

class KeySource
{
public:
    KeySource(std::uint32_t seed, const Weights& weights)
        : random_(seed),
          kind_({weights.letter, weights.enter, weights.vertical, weights.sideways, weights.erase, weights.fragment,
                 weights.anyByte, weights.noByte, weights.controlC, weights.burst})
    {
    }

    /** At least as many keys as asked for. */
    std::vector<int> keys(std::size_t count)
    {
        while (keys_.size() < count) {
            append();
        }
        return std::move(keys_);
    }

private:
    void append()
    {
        switch (kind_(random_)) {
            case 0:
                return append(letter());
            case 1:
                return append(oneOf({"\r", "\n"}));
            case 2:
                return append(oneOf({kUp, kUp, kUp, kDown, kDown}));
            case 3:
                return append(oneOf({kLeft, kLeft, kLeft, kRight, kRight, kHome, kEnd}));
            case 4:
                return append(oneOf({kBackspace, kDelete}));
            case 5:
                return append(oneOf({kEscape, kEscape, "[", "A", "B", "C", "D", "1", "4", "~", "x", kEscape + "[",
                                     kEscape + "[1", kEscape + "[4", kEscape + "O", kBackspace}));
            case 6:
                return append(std::string(1, static_cast<char>(number(0, 255))));
            case 7:
                keys_.insert(keys_.end(), number(0, 9) == 0 ? number(250, 260) : number(1, 3), kNoByte);
                return;
            case 8:
                return append(kControlC);
            default:
                for (std::size_t left = number(50, 300); left > 0; --left) {
                    append(letter());
                }
        }
    }

    void append(const std::string& bytes)
    {
        const std::vector<int> more = keysOf(bytes);
        keys_.insert(keys_.end(), more.begin(), more.end());
    }

    std::size_t number(std::size_t low, std::size_t high)
    {
        return std::uniform_int_distribution<std::size_t>(low, high)(random_);
    }

    std::string oneOf(const std::vector<std::string>& choices) { return choices[number(0, choices.size() - 1)]; }

    std::string letter() { return oneOf({"a", "a", "a", "b", "b", "c", " ", "~"}); }

    std::mt19937 random_;
    std::discrete_distribution<int> kind_;
    std::vector<int> keys_;
};

/** Follows a session of the real editor with the model. */
class Follower
{
public:
    explicit Follower(std::vector<int> keys) : keys_(std::move(keys)), session_(play(keys_)) {}

    /** Compares everything up to the first difference, which fails the test. */
    void compare(bool alsoOnScreen)
    {
        for (const EditedLine& line : session_) {
            compareLine(line, alsoOnScreen);
            if (testing::Test::HasFailure()) {
                return;
            }
        }
        EXPECT_GE(next_, keys_.size()) << "the editor did not read all keys";
    }

private:
    // The session sends Ctrl-C once the keys are used up.
    int nextKey()
    {
        const int key = next_ < keys_.size() ? keys_[next_] : kControlC[0];
        ++next_;
        return key;
    }

    void compareLine(const EditedLine& line, bool alsoOnScreen)
    {
        EditorModel::Reaction expected{model_.start(), {}};
        for (std::size_t step = 0; step < line.shown.size(); ++step) {
            if (step > 0) {
                ASSERT_FALSE(expected.result.has_value())
                    << "the editor reads key " << next_ << " after the line's end";
                expected = model_.press(nextKey());
            }
            ASSERT_EQ(readable(line.shown[step]), readable(expected.output)) << "after key " << next_ << recentKeys();
            if (alsoOnScreen) {
                compareScreen(line.shown[step], !expected.result.has_value() && !model_.overflowed());
            }
        }
        ASSERT_EQ(line.result, expected.result.value_or(-1)) << "after key " << next_ << recentKeys();
        if (line.result == 0) {
            const std::string terminated = model_.line() + '\0';
            ASSERT_EQ(readable(line.buffer.substr(0, terminated.size())), readable(terminated))
                << "after key " << next_ << recentKeys();
        }
    }

    void compareScreen(const std::string& output, bool comparable)
    {
        screen_.feed(output);
        if (!comparable) {
            return;
        }
        std::string row = ">" + model_.line();
        row.erase(row.find_last_not_of(' ') + 1);
        ASSERT_EQ(screen_.currentRow(), row) << "after key " << next_ << recentKeys();
        ASSERT_EQ(screen_.cursorColumn(), static_cast<int>(model_.cursor()) + 1)
            << "after key " << next_ << recentKeys();
    }

    std::string recentKeys() const
    {
        const std::size_t end = std::min(next_, keys_.size());
        std::string bytes;
        for (std::size_t i = end - std::min<std::size_t>(end, 200); i < end; ++i) {
            bytes += static_cast<char>(keys_[i]);
        }
        return ", the latest keys being " + readable(bytes);
    }

    std::vector<int> keys_;
    Session session_;
    EditorModel model_;
    std::size_t next_ = 0;
    // Wide enough for the longest line, so that no line wraps.
    Screen screen_{4, 300};
};

struct Profile {
    const char* name;
    Weights weights;
    std::uint32_t runs;
    std::size_t keysARun;
    bool onScreen;
};

void PrintTo(const Profile& profile, std::ostream* stream)
{
    *stream << profile.name;
}

class LineEditorModel : public testing::TestWithParam<Profile>
{
};

TEST_P(LineEditorModel, AgreesWithTheEditorOverRandomKeys)
{
    const Profile& profile = GetParam();
    // To start a run's process takes ten times as long under a sanitizer.
    constexpr std::uint32_t kShare = TOVIRA_SANITIZED ? 5 : 1;
    for (std::uint32_t seed = 1; seed <= profile.runs / kShare; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Follower(KeySource(seed, profile.weights).keys(profile.keysARun)).compare(profile.onScreen);
        if (HasFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Keys, LineEditorModel,
    testing::Values(Profile{"Mixed", kMixed, 1500, 300, false}, Profile{"MixedLong", kMixed, 10, 20000, false},
                    Profile{"Printable", kPrintable, 200, 300, true}, Profile{"ManyLines", kManyLines, 40, 5000, false},
                    Profile{"LongLines", kLongLines, 100, 1000, false},
                    Profile{"Sequences", kSequences, 500, 300, false}, Profile{"AllBytes", kAllBytes, 300, 600, false}),
    [](const auto& profile) { return std::string(profile.param.name); });

}  // namespace
