/**
 * @file editor_session.h
 * Plays keys to the line editor in a process of its own, so that every session starts with an empty history.
 */
#ifndef EDITOR_SESSION_H
#define EDITOR_SESSION_H

#include <string>
#include <vector>

inline const std::string kUp = "\x1b[A";
inline const std::string kDown = "\x1b[B";
inline const std::string kRight = "\x1b[C";
inline const std::string kLeft = "\x1b[D";
inline const std::string kHome = "\x1b[1~";
inline const std::string kEnd = "\x1b[4~";
inline const std::string kEscape = "\x1b";
inline const std::string kEnter = "\r";
inline const std::string kControlC = "\x03";
inline const std::string kBackspace = "\b";
inline const std::string kDelete = "\x7f";

/** A read that gives no byte. */
inline constexpr int kNoByte = -1;

/** One call of getCmdLine. */
struct EditedLine {
    int result = 0;
    std::string buffer;             /**< CmdLines afterwards, all of it */
    std::vector<std::string> shown; /**< what was printed before the first key and after every key, in order */

    /** The text that the buffer holds. */
    std::string text() const { return buffer.substr(0, buffer.find('\0')); }

    /** Everything printed. */
    std::string output() const;
};

using Session = std::vector<EditedLine>;

/** The keys that send these bytes. */
std::vector<int> keysOf(const std::string& bytes);

/**
 * Calls getCmdLine until all keys have been read. A call that asks for more keys gets Ctrl-C.
 * The test fails, and the session is empty, when the editor crashes or goes on reading after that.
 */
Session play(const std::vector<int>& keys);
Session play(const std::string& bytes);

/** The texts of the lines that were ended with Enter. */
std::vector<std::string> texts(const Session& session);

/** Everything printed in a session. */
std::string output(const Session& session);

/** Bytes as a C string literal would have them, for messages. */
std::string readable(const std::string& bytes);

#endif
