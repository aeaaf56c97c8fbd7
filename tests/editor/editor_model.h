/**
 * @file editor_model.h
 * The line editor's rules a second time, over growing strings and a list instead of fixed buffers, to compare with.
 */
#ifndef EDITOR_MODEL_H
#define EDITOR_MODEL_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>

/** Predicts every byte that the editor prints and every line that it returns. */
class EditorModel
{
public:
    /** What one key leads to. */
    struct Reaction {
        std::string output;
        std::optional<int> result; /**< set when the key ends the line or the console */
    };

    /** Begins a new line. @return what is printed for it */
    std::string start();

    /** @param key the byte that was read, or -1 for a read that gave nothing */
    Reaction press(int key);

    /** The line being edited or, after a result, as it was when it ended. */
    const std::string& line() const { return line_; }

    /** Cursor position in the line, from 0. */
    std::size_t cursor() const { return cursor_; }

    /** Whether a byte has been echoed in the current line that had no room in it: from then on the screen differs. */
    bool overflowed() const { return overflowed_; }

private:
    enum class State { normal, escape, secondByte, tilde };
    enum class Move { none, up, down };

    static constexpr int kSlots = 128;

    std::string typed(char byte);
    std::string erase();
    std::string insert(char byte);
    std::string afterBracket(int key);
    std::string home();
    std::string end();
    std::string right();
    std::string left();
    std::string up();
    std::string down();
    std::string clear() const;
    std::string showAtEnd(std::string output);
    bool equalsSelected() const;
    int before(int slot) const;
    void store();

    std::array<std::string, kSlots> history_;
    int next_ = 0;
    bool wrapped_ = false;
    int selected_ = -1;

    std::string line_;
    std::size_t cursor_ = 0;
    State state_ = State::normal;
    int second_ = 0;
    int awaited_ = 0;
    Move lastMove_ = Move::none;
    int emptyReads_ = 0;
    bool overflowed_ = false;
};

#endif
