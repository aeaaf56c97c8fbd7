/**
 * @file board_process.h
 * Runs vek_board beside the test.
 */
#ifndef BOARD_PROCESS_H
#define BOARD_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

/** A board on a pseudo-terminal of its own. */
class BoardProcess
{
public:
    /** Starts it and reads its terminal's name. Throws std::runtime_error. */
    explicit BoardProcess(std::vector<std::string> options = {});
    /** Kills it if it has not ended. */
    ~BoardProcess();
    BoardProcess(const BoardProcess&) = delete;
    BoardProcess& operator=(const BoardProcess&) = delete;

    /** The terminal that a host opens, "/dev/pts/3". */
    const std::string& terminal() const { return terminal_; }
    /** What `--tty` takes for it, "pts/3,115200". */
    std::string ttyOption(int rate = 115200) const;

    void signal(int number) const;
    /** Waits for its end. @return the status as waitpid() gives it */
    int wait();

private:
    pid_t process_ = -1;
    std::string terminal_;
};

#endif
