#include "board_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

BoardProcess::BoardProcess(std::vector<std::string> options)
{
    options.insert(options.begin(), VEK_BOARD);
    std::vector<char*> arguments;
    for (std::string& option : options) {
        arguments.push_back(option.data());
    }
    arguments.push_back(nullptr);
    std::array<int, 2> output{};
    if (pipe2(output.data(), O_CLOEXEC) != 0 || (process_ = fork()) < 0) {
        throw std::runtime_error("cannot start the board");
    }
    if (process_ == 0) {
        dup2(output[1], STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(output[1]);
    char byte = 0;
    while (read(output[0], &byte, 1) == 1 && byte != '\n') {
        terminal_ += byte;
    }
    close(output[0]);
    if (byte != '\n') {
        throw std::runtime_error("the board has named no terminal");
    }
}

BoardProcess::~BoardProcess()
{
    if (process_ > 0) {
        kill(process_, SIGKILL);
        wait();
    }
}

std::string BoardProcess::ttyOption(int rate) const
{
    return terminal_.substr(std::string("/dev/").size()) + ',' + std::to_string(rate);
}

void BoardProcess::signal(int number) const
{
    kill(process_, number);
}

int BoardProcess::wait()
{
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return status;
}
