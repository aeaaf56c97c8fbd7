// Keystrokes through the line editor, compared with a second reading of its rules: every line that it returns and every
// byte that it prints. The first byte of the input chooses how many lines have been typed before.

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "editor_model.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/terminal.h"

extern "C" int __real__Z8my_getchv();

namespace
{

// No key sends it: it stands for a stop of the console between two keys.
constexpr int kStop = 0xfe;

// What the model makes of the keys that the editor has read.
struct Follower {
    EditorModel model;
    std::string expected;
    // After a stop the screen is drawn anew, of which the model knows nothing.
    bool stopped = false;

    int press(int key)
    {
        if (key == kStop) {
            stopped = true;
            return kKeyAfterStop;
        }
        expected += model.press(key).output;
        return key;
    }
};

Follower* follower = nullptr;

// Around the numbers at which the history is full and has wrapped.
constexpr unsigned kLinesBefore[] = {0, 1, 3, 127, 128, 129, 130, 255};

std::string typedLines(unsigned count)
{
    constexpr unsigned kLetters = 26;
    std::string keys;
    for (unsigned line = 0; line < count; ++line) {
        keys += static_cast<char>('a' + line % kLetters);
        keys += '\r';
    }
    return keys;
}

int editLine()
{
    follower->expected += follower->model.start();
    const int result = getCmdLine();
    // The editor returns its buffer up to the end of the line, the model the line, in which a NUL may stand.
    fuzz::require(result != 0 || follower->model.line() == std::string_view(CmdLines, follower->model.line().size()));
    fuzz::require(result != 0 || CmdLines[follower->model.line().size()] == '\0');
    return result;
}

}  // namespace

extern "C" int __wrap__Z8my_getchv()
{
    return follower->press(__real__Z8my_getchv());
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string typed = typedLines(kLinesBefore[data[0] % std::size(kLinesBefore)]) +
                              std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
    Follower here;
    follower = &here;
    const fuzz::Sandbox sandbox(typed, true);
    int result = 0;
    do {
        result = editLine();
        // A Ctrl-C ends the console; what stands behind it goes to the next one.
    } while (result == 0 || fuzz::Sandbox::typedLeft() > 0);
    const std::string_view printed = sandbox.printed();
    fuzz::require(here.stopped || printed == std::string_view(here.expected).substr(0, printed.size()));
    return 0;
}
