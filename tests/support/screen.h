/**
 * @file screen.h
 * What a user sees of a program's output: a terminal emulator without a window.
 */
#ifndef SCREEN_H
#define SCREEN_H

#include <string>
#include <string_view>

struct VTerm;
struct VTermScreen;

/** An ECMA-48 terminal in an 8-bit character set. The output must be what a terminal gets, line ends as CR and LF. */
class Screen
{
public:
    /** A blank screen with the cursor at its upper left corner. */
    explicit Screen(int rows = 24, int columns = 80);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /** Lets output arrive. Answers of the terminal to the program are dropped. */
    void feed(std::string_view output);

    /** The characters of a row, from 0, without the blanks at its end. */
    std::string row(int index) const;

    /** The row that the cursor is in. */
    std::string currentRow() const { return row(cursorRow()); }

    int cursorRow() const;
    int cursorColumn() const;

private:
    int columns_;
    VTerm* terminal_;
    VTermScreen* screen_;
};

#endif
