#include "editor_model.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t kLongestLine = 255;
constexpr int kMostEmptyReads = 255;
constexpr int kNothingSelected = -1;
constexpr char kBackspace = '\b';

// History entries, comparisons with them and the line after a move through the history are C texts.
std::string upToNul(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

std::string repeated(char character, std::size_t count)
{
    return std::string(count, character);
}

}  // namespace

std::string EditorModel::start()
{
    line_.clear();
    cursor_ = 0;
    state_ = State::normal;
    lastMove_ = Move::none;
    emptyReads_ = 0;
    overflowed_ = false;
    return ">";
}

EditorModel::Reaction EditorModel::press(int key)
{
    emptyReads_ = key < 0 ? emptyReads_ + 1 : 0;
    if (emptyReads_ > kMostEmptyReads) {
        return {"", 1};
    }
    const int byte = key & 0xff;
    if (byte == '\r' || byte == '\n') {
        store();
        return {"\r\n", 0};
    }
    if (byte == '\x03' && state_ != State::escape) {
        return {"", 1};
    }
    if (byte == '\x1b') {
        state_ = State::escape;
        return {};
    }
    switch (state_) {
        case State::escape:
            second_ = byte;
            state_ = State::secondByte;
            return {};
        case State::secondByte:
            state_ = State::normal;
            return {second_ == '[' ? afterBracket(byte) : typed(static_cast<char>(byte)), {}};
        case State::tilde:
            state_ = State::normal;
            if (byte == '~') {
                return {awaited_ == '1' ? home() : end(), {}};
            }
            break;
        case State::normal:
            break;
    }
    return {typed(static_cast<char>(byte)), {}};
}

std::string EditorModel::afterBracket(int key)
{
    switch (key) {
        case 'A':
            return up();
        case 'B':
            return down();
        case 'C':
            return right();
        case 'D':
            return left();
        case '1':
        case '4':
            awaited_ = key;
            state_ = State::tilde;
            return "";
        default:
            return typed(static_cast<char>(key));
    }
}

std::string EditorModel::typed(char byte)
{
    return byte == kBackspace || byte == '\x7f' ? erase() : insert(byte);
}

std::string EditorModel::erase()
{
    if (cursor_ == 0) {
        return "";
    }
    --cursor_;
    line_.erase(cursor_, 1);
    const std::string rest = line_.substr(cursor_);
    return std::string{kBackspace}.append(rest).append(" ").append(repeated(kBackspace, rest.size() + 1));
}

std::string EditorModel::insert(char byte)
{
    const std::string rest = line_.substr(cursor_);
    line_.insert(cursor_, 1, byte);
    ++cursor_;
    if (line_.size() > kLongestLine) {
        line_.resize(kLongestLine);
        overflowed_ = true;
    }
    cursor_ = std::min(cursor_, line_.size());
    return std::string{byte}.append(rest).append(repeated(kBackspace, rest.size()));
}

std::string EditorModel::home()
{
    if (cursor_ == 0) {
        return "";
    }
    cursor_ = 0;
    return "\r>";
}

std::string EditorModel::end()
{
    std::string passed = line_.substr(cursor_);
    cursor_ = line_.size();
    return passed;
}

std::string EditorModel::right()
{
    if (cursor_ == line_.size()) {
        return "";
    }
    return std::string(1, line_[cursor_++]);
}

std::string EditorModel::left()
{
    if (cursor_ == 0) {
        return "";
    }
    --cursor_;
    return std::string(1, kBackspace);
}

std::string EditorModel::clear() const
{
    return std::string{"\r"}.append(repeated(' ', line_.size() + 1)).append("\r>");
}

std::string EditorModel::showAtEnd(std::string output)
{
    cursor_ = line_.size();
    return std::move(output) + line_;
}

bool EditorModel::equalsSelected() const
{
    return upToNul(line_) == history_[static_cast<std::size_t>(selected_)];
}

int EditorModel::before(int slot) const
{
    if (slot > 0) {
        return slot - 1;
    }
    return wrapped_ ? kSlots - 1 : kNothingSelected;
}

std::string EditorModel::up()
{
    if (lastMove_ == Move::down && selected_ >= 0) {
        selected_ = before(selected_);
    }
    lastMove_ = Move::up;
    std::string cleared = clear();
    if (selected_ < 0) {
        line_.clear();
    } else if (selected_ == next_) {
        line_ = upToNul(line_);
        selected_ = wrapped_ ? before(selected_) : selected_;
    } else if (equalsSelected()) {
        line_ = selected_ == 0 ? "" : history_[static_cast<std::size_t>(selected_ - 1)];
        selected_ = before(selected_);
    } else {
        line_ = history_[static_cast<std::size_t>(selected_)];
    }
    return showAtEnd(std::move(cleared));
}

std::string EditorModel::down()
{
    std::string cleared = clear();
    if (lastMove_ == Move::up) {
        ++selected_;
        if (selected_ == kSlots) {
            selected_ = wrapped_ ? 0 : kSlots - 1;
        }
    }
    lastMove_ = Move::down;
    if (selected_ < 0) {
        line_.clear();
    } else if (selected_ == next_) {
        line_.clear();
        selected_ = wrapped_ ? (selected_ + 1) % kSlots : selected_;
    } else {
        if (equalsSelected()) {
            selected_ = (selected_ + 1) % kSlots;
        }
        line_ = history_[static_cast<std::size_t>(selected_)];
    }
    return showAtEnd(std::move(cleared));
}

void EditorModel::store()
{
    if (line_.empty()) {
        return;
    }
    // A text that ends before the line does must end in the entry too; otherwise the beginning of the entry counts.
    const std::string text = upToNul(line_);
    const bool wholeText = text.size() < line_.size();
    if (selected_ >= 0) {
        const std::string& entry = history_[static_cast<std::size_t>(selected_)];
        if (wholeText ? entry == text : entry.starts_with(text)) {
            return;
        }
    } else if (next_ > 0 && history_[static_cast<std::size_t>(next_ - 1)] == text) {
        return;
    }
    history_[static_cast<std::size_t>(next_)] = text;
    selected_ = next_;
    next_ = (next_ + 1) % kSlots;
    wrapped_ = wrapped_ || next_ == 0;
}
