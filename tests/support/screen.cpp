#include "screen.h"

#include <vterm.h>

#include <new>

namespace
{

VTermPos cursorPosition(VTerm* terminal)
{
    VTermPos position;
    vterm_state_get_cursorpos(vterm_obtain_state(terminal), &position);
    return position;
}

}  // namespace

Screen::Screen(int rows, int columns) : columns_(columns), terminal_(vterm_new(rows, columns)), screen_(nullptr)
{
    if (terminal_ == nullptr) {
        throw std::bad_alloc();
    }
    vterm_set_utf8(terminal_, 0);
    screen_ = vterm_obtain_screen(terminal_);
    vterm_screen_reset(screen_, 1);
}

Screen::~Screen()
{
    vterm_free(terminal_);
}

void Screen::feed(std::string_view output)
{
    vterm_input_write(terminal_, output.data(), output.size());
}

std::string Screen::row(int index) const
{
    std::string text;
    for (int column = 0; column < columns_; ++column) {
        VTermScreenCell cell;
        vterm_screen_get_cell(screen_, VTermPos{.row = index, .col = column}, &cell);
        text += cell.chars[0] == 0 ? ' ' : static_cast<char>(cell.chars[0]);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

int Screen::cursorRow() const
{
    return cursorPosition(terminal_).row;
}

int Screen::cursorColumn() const
{
    return cursorPosition(terminal_).col;
}
