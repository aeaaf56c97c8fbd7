#include "tovira_parse/line_editor.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "tovira_parse/terminal.h"

char CmdLines[kCmdLineSize];

namespace
{

constexpr int kCtrlC = 3;
constexpr int kBackspace = 8;
constexpr int kLineFeed = 10;
constexpr int kCarriageReturn = 13;
constexpr int kEscape = 27;
constexpr int kDelete = 127;
constexpr int kFailedRead = 255;

constexpr int kLongestLine = kCmdLineSize - 1;
constexpr int kHistorySize = 128;
constexpr int kNothingSelected = -1;

// Standard input that is no terminal, or has ended, fails at every read: that many in a row end the console.
constexpr int kFailuresBeforeEnd = kCmdLineSize;

int CmdLinesLen = 0;

char oldCmdLines[kHistorySize][kCmdLineSize];
int curIndex = 0;
int overMaxCmdCnt = 0;
int oldCmdIndex = kNothingSelected;

enum class Sequence { kNone, kAfterEscape, kAfterSecondByte, kHomePending, kEndPending };
enum class HistoryMove { kNone, kUp, kDown };

// What lives for one call of getCmdLine.
struct Editing {
    int cursor = 0;
    Sequence sequence = Sequence::kNone;
    int secondByte = 0;
    HistoryMove lastMove = HistoryMove::kNone;
};

void print(int character, int times = 1)
{
    for (; times > 0; --times) {
        putchar(character);
    }
}

void printLineFrom(int position)
{
    fwrite(CmdLines + position, 1, static_cast<std::size_t>(CmdLinesLen - position), stdout);
}

void clearDisplayedLine()
{
    print('\r');
    print(' ', CmdLinesLen + 1);
    print('\r');
    print('>');
}

void terminateLine()
{
    CmdLines[CmdLinesLen] = '\0';
}

void insertAtCursor(Editing& editing, int byte)
{
    const int behind = CmdLinesLen - editing.cursor;
    ++CmdLinesLen;
    memmove(CmdLines + editing.cursor + 1, CmdLines + editing.cursor, static_cast<std::size_t>(behind));
    CmdLines[editing.cursor] = static_cast<char>(byte);
    ++editing.cursor;
    print(byte);
    printLineFrom(editing.cursor);
    print(kBackspace, behind);
    // Beyond the full length a byte has shown itself and taken the place of the terminator; there it is lost.
    CmdLinesLen = std::min(CmdLinesLen, kLongestLine);
    editing.cursor = std::min(editing.cursor, CmdLinesLen);
}

void deleteBeforeCursor(Editing& editing)
{
    if (editing.cursor == 0) {
        return;
    }
    const int behind = CmdLinesLen - editing.cursor;
    memmove(CmdLines + editing.cursor - 1, CmdLines + editing.cursor, static_cast<std::size_t>(behind));
    --editing.cursor;
    --CmdLinesLen;
    print(kBackspace);
    printLineFrom(editing.cursor);
    print(' ');
    print(kBackspace, behind + 1);
}

void moveRight(Editing& editing)
{
    if (editing.cursor < CmdLinesLen) {
        print(static_cast<unsigned char>(CmdLines[editing.cursor]));
        ++editing.cursor;
    }
}

void moveLeft(Editing& editing)
{
    if (editing.cursor > 0) {
        print(kBackspace);
        --editing.cursor;
    }
}

void moveHome(Editing& editing)
{
    if (editing.cursor > 0) {
        print('\r');
        print('>');
        editing.cursor = 0;
    }
}

void moveEnd(Editing& editing)
{
    printLineFrom(editing.cursor);
    editing.cursor = CmdLinesLen;
}

// The line as it stands, on a line of the terminal that something else may have been written to.
void redrawLine(const Editing& editing)
{
    print('\r');
    print('>');
    printLineFrom(0);
    print(kBackspace, CmdLinesLen - editing.cursor);
}

// The entry of a slot; the place before the first slot and the empty selection hold an empty line.
const char* historyEntry(int slot)
{
    return slot < 0 ? "" : oldCmdLines[slot];
}

// Before the first slot lies the last one once the ring has wrapped, and nothing until then.
void selectOlder()
{
    --oldCmdIndex;
    if (oldCmdIndex < 0 && overMaxCmdCnt != 0) {
        oldCmdIndex = kHistorySize - 1;
    }
}

// Past the last slot lies the first one, once the ring has wrapped.
void selectNewer(int pastTheEnd)
{
    ++oldCmdIndex;
    if (oldCmdIndex >= kHistorySize) {
        oldCmdIndex = pastTheEnd;
    }
}

void showHistoryLine(Editing& editing, const char* line)
{
    memmove(CmdLines, line, strlen(line) + 1);
    CmdLinesLen = static_cast<int>(strlen(CmdLines));
    printLineFrom(0);
    editing.cursor = CmdLinesLen;
}

void historyUp(Editing& editing)
{
    if (editing.lastMove == HistoryMove::kDown && oldCmdIndex != kNothingSelected) {
        selectOlder();
    }
    clearDisplayedLine();
    terminateLine();
    const char* line = CmdLines;
    if (oldCmdIndex == kNothingSelected) {
        line = "";
    } else if (oldCmdIndex == curIndex) {
        if (overMaxCmdCnt != 0) {
            selectOlder();
        }
    } else if (strcmp(CmdLines, historyEntry(oldCmdIndex)) == 0) {
        line = historyEntry(oldCmdIndex - 1);
        selectOlder();
    } else {
        line = historyEntry(oldCmdIndex);
    }
    showHistoryLine(editing, line);
    editing.lastMove = HistoryMove::kUp;
}

void historyDown(Editing& editing)
{
    const int pastTheEnd = overMaxCmdCnt != 0 ? 0 : kHistorySize - 1;
    if (editing.lastMove == HistoryMove::kUp) {
        selectNewer(pastTheEnd);
    }
    clearDisplayedLine();
    terminateLine();
    const char* line = "";
    if (oldCmdIndex != curIndex) {
        if (oldCmdIndex != kNothingSelected && strcmp(CmdLines, historyEntry(oldCmdIndex)) == 0) {
            selectNewer(0);
        }
        line = historyEntry(oldCmdIndex);
    } else if (overMaxCmdCnt != 0) {
        selectNewer(0);
    }
    showHistoryLine(editing, line);
    editing.lastMove = HistoryMove::kDown;
}

// A line that was recalled and runs unchanged is not stored again, nor is a line that repeats the newest one.
bool isStoredAlready()
{
    if (oldCmdIndex != kNothingSelected) {
        return strncmp(CmdLines, oldCmdLines[oldCmdIndex], static_cast<std::size_t>(CmdLinesLen)) == 0;
    }
    return curIndex > 0 && strcmp(CmdLines, oldCmdLines[curIndex - 1]) == 0;
}

void storeInHistory()
{
    if (CmdLinesLen == 0 || isStoredAlready()) {
        return;
    }
    memcpy(oldCmdLines[curIndex], CmdLines, kCmdLineSize);
    oldCmdIndex = curIndex;
    ++curIndex;
    if (curIndex >= kHistorySize) {
        curIndex = 0;
        overMaxCmdCnt = 1;
    }
}

void finishLine()
{
    print('\r');
    print('\n');
    terminateLine();
    storeInHistory();
    CmdLinesLen = 0;
}

void handleTypedKey(Editing& editing, int byte)
{
    if (byte == kBackspace || byte == kDelete) {
        deleteBeforeCursor(editing);
    } else {
        insertAtCursor(editing, byte);
    }
}

// The byte behind ESC '[' in full. False when it belongs to no sequence and is a key of its own.
bool handleBracketByte(Editing& editing, int byte)
{
    switch (byte) {
        case 'A':
            historyUp(editing);
            return true;
        case 'B':
            historyDown(editing);
            return true;
        case 'C':
            moveRight(editing);
            return true;
        case 'D':
            moveLeft(editing);
            return true;
        case '1':
            editing.sequence = Sequence::kHomePending;
            return true;
        case '4':
            editing.sequence = Sequence::kEndPending;
            return true;
        default:
            return false;
    }
}

// One byte that is neither the end of the line nor ESC nor Ctrl-C.
void handleByte(Editing& editing, int byte)
{
    const Sequence sequence = editing.sequence;
    if (sequence == Sequence::kAfterEscape) {
        editing.secondByte = byte;
        editing.sequence = Sequence::kAfterSecondByte;
        return;
    }
    editing.sequence = Sequence::kNone;
    if (sequence == Sequence::kAfterSecondByte && editing.secondByte == '[' && handleBracketByte(editing, byte)) {
        return;
    }
    if (sequence == Sequence::kHomePending && byte == '~') {
        moveHome(editing);
    } else if (sequence == Sequence::kEndPending && byte == '~') {
        moveEnd(editing);
    } else {
        handleTypedKey(editing, byte);
    }
}

}  // namespace

int getCmdLine()
{
    Editing editing;
    int failures = 0;
    CmdLinesLen = 0;
    CmdLines[0] = '\0';
    print('>');
    for (;;) {
        int key = my_getch();
        if (key == kKeyAfterStop) {
            redrawLine(editing);
            continue;
        }
        failures = key < 0 ? failures + 1 : 0;
        if (failures >= kFailuresBeforeEnd) {
            return 1;
        }
        key = key < 0 ? kFailedRead : key;
        if (key == kCarriageReturn || key == kLineFeed) {
            finishLine();
            return 0;
        }
        if (key == kCtrlC && editing.sequence != Sequence::kAfterEscape) {
            return 1;
        }
        if (key == kEscape) {
            editing.sequence = Sequence::kAfterEscape;
        } else {
            handleByte(editing, key);
        }
    }
}
