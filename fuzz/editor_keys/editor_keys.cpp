// Keystrokes through the line editor, compared with a second reading of its rules: every line that it returns and every
// byte that it prints. The first byte of the input chooses how many lines have been typed before, and how it ends.

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "editor_model.h"
#include "support/require.h"
#include "support/sandbox.h"
#include "tovira_parse/line_editor.h"
#include "tovira_parse/terminal.h"

namespace
{

// No key sends it: it stands for a stop of the console between two keys.
constexpr int kStop = 0xfe;

constexpr int kNoKey = -1;
constexpr int kCtrlC = 3;

// Types the keys, and follows with the model what the editor makes of them.
struct Follower {
    std::string keys;
    int keyAtEnd;
    std::size_t next = 0;
    EditorModel model;
    std::string expected;
    // After a stop the screen is drawn anew, of which the model knows nothing.
    bool stopped = false;

    bool atEnd() const { return next == keys.size(); }

    int type()
    {
        const int key = atEnd() ? keyAtEnd : static_cast<unsigned char>(keys[next++]);
        if (key == kStop) {
            stopped = true;
            return kKeyAfterStop;
        }
        expected += model.press(key).output;
        return key;
    }
};

Follower* follower = nullptr;

// In the first byte: input that ends, with which the editor has some patience, instead of Ctrl-C.
constexpr std::uint8_t kEndsByItself = 0x80;

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

// In the place of the function that reads a key from the terminal.
extern "C" int __wrap__Z8my_getchv()
{
    return follower->type();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string before = typedLines(kLinesBefore[data[0] % std::size(kLinesBefore)]);
    Follower here{.keys = before + std::string(reinterpret_cast<const char*>(data) + 1, size - 1),
                  .keyAtEnd = (data[0] & kEndsByItself) != 0 ? kNoKey : kCtrlC};
    follower = &here;
    const fuzz::Sandbox sandbox;
    int result = 0;
    do {
        result = editLine();
        // A Ctrl-C ends the console; what stands behind it goes to the next one.
    } while (result == 0 || !here.atEnd());
    const std::string_view printed = sandbox.printed();
    fuzz::require(here.stopped || printed == std::string_view(here.expected).substr(0, printed.size()));
    return 0;
}
