#include "syscall_faults.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <optional>
#include <system_error>

namespace faults_test
{
namespace
{

constexpr unsigned kPatienceSeconds = 20;

int checked(long result, const char* operation)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
    return static_cast<int>(result);
}

class MemoryFile
{
public:
    explicit MemoryFile(const std::string& contents = "")
        : descriptor_(checked(memfd_create("traced", MFD_CLOEXEC), "memfd_create"))
    {
        checked(pwrite(descriptor_, contents.data(), contents.size(), 0), "pwrite");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int descriptor() const { return descriptor_; }

    std::string contents() const
    {
        struct stat status = {};
        checked(fstat(descriptor_, &status), "fstat");
        std::string text(static_cast<std::size_t>(status.st_size), '\0');
        checked(pread(descriptor_, text.data(), text.size(), 0), "pread");
        return text;
    }

private:
    int descriptor_;
};

/** A terminal with somebody who types when the program waits for it. */
class Terminal
{
public:
    explicit Terminal(const std::vector<std::string>& keys) : keys_(keys)
    {
        checked(openpty(&keyboard_, &descriptor_, nullptr, nullptr, nullptr), "openpty");
        checked(fcntl(keyboard_, F_SETFD, FD_CLOEXEC), "fcntl");
    }
    ~Terminal()
    {
        close(descriptor_);
        close(keyboard_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int descriptor() const { return descriptor_; }

    /** Types the next piece unless there is something to read. */
    void type()
    {
        int waiting = 0;
        checked(ioctl(descriptor_, FIONREAD, &waiting), "look at the terminal");
        if (waiting == 0 && typed_ < keys_.size()) {
            const std::string& piece = keys_[typed_++];
            checked(write(keyboard_, piece.data(), piece.size()), "type");
        }
    }

private:
    const std::vector<std::string>& keys_;
    std::size_t typed_ = 0;
    int keyboard_ = -1;
    int descriptor_ = -1;
};

bool waitsForInput(const SystemCall& call)
{
    return call.number == SYS_ppoll || call.number == SYS_poll || call.number == SYS_pselect6 ||
           call.number == SYS_select || (call.number == SYS_read && call.arguments[0] == STDIN_FILENO);
}

/** A stopped thread is gone all the same once another one has ended the program, which the next wait tells.
    @return whether it is still there */
bool reached(long result, const char* operation)
{
    if (result < 0 && errno == ESRCH) {
        return false;
    }
    checked(result, operation);
    return true;
}

/** What becomes of a call that fails lies in registers, by machine. */
#if defined(__x86_64__)
void skipCall(pid_t thread)
{
    reached(ptrace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, orig_rax), -1L), "skip a call");
}

void setCallResult(pid_t thread, long result)
{
    reached(ptrace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, rax), result), "set the result of a call");
}

constexpr bool kKnowsMachine = true;
#else
void skipCall(pid_t /*thread*/) {}
void setCallResult(pid_t /*thread*/, long /*result*/) {}
constexpr bool kKnowsMachine = false;
#endif

volatile sig_atomic_t patienceIsOver = 0;

void noteEndOfPatience(int /*signal*/)
{
    patienceIsOver = 1;
}

/** Interrupts a wait that takes too long. */
class Patience
{
public:
    Patience()
    {
        patienceIsOver = 0;
        struct sigaction action = {};
        action.sa_handler = noteEndOfPatience;
        sigaction(SIGALRM, &action, &before_);
        alarm(kPatienceSeconds);
    }
    ~Patience()
    {
        alarm(0);
        sigaction(SIGALRM, &before_, nullptr);
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

private:
    struct sigaction before_ = {};
};

[[noreturn]] void becomeTraced(const TracedCommand& command, const std::array<int, 3>& files) noexcept
{
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    if (!command.keys.empty()) {
        setsid();
        ioctl(files[STDIN_FILENO], TIOCSCTTY, 0);
    }
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        dup2(files[static_cast<std::size_t>(descriptor)], descriptor);
    }
    // A sanitizer's search for leaks needs to trace, which it cannot do to what is traced.
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    std::vector<char*> argv;
    for (const std::string& argument : command.arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: the interface is C's
    }
    argv.push_back(nullptr);
    if ((command.folder.empty() || chdir(command.folder.c_str()) == 0) && ptrace(PTRACE_TRACEME, 0, 0, 0) == 0) {
        execv(argv.front(), argv.data());
    }
    _exit(127);
}

/** Follows a traced program and all of its threads. */
class Tracer
{
public:
    /** @param terminal where keys are typed; null when none are */
    Tracer(pid_t program, const CallFaults& faults, Terminal* terminal)
        : program_(program), faults_(faults), terminal_(terminal), matching_(faults.size())
    {
    }

    void follow(TracedRun& run)
    {
        const Patience patience;
        int status = 0;
        checked(waitpid(program_, &status, 0), "wait for the program");
        if (WIFEXITED(status)) {
            throw std::runtime_error("the program cannot be run traced");
        }
        checked(ptrace(PTRACE_SETOPTIONS, program_, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL),
                "set trace options");
        resume(program_, 0);
        while (!ended(run)) {
        }
        run.matching = matching_;
    }

private:
    /** Handles one event. @return whether it is the end of the program */
    bool ended(TracedRun& run)
    {
        int status = 0;
        const pid_t thread = waitpid(-1, &status, __WALL);
        if (thread < 0) {
            if (errno == EINTR && patienceIsOver != 0) {
                run.timedOut = true;
                kill(program_, SIGKILL);
                patienceIsOver = 0;
            }
            return errno == ECHILD;
        }
        if (WIFEXITED(status) || WIFSIGNALED(status)) {
            if (thread == program_) {
                run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
                run.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
            }
            return thread == program_;
        }
        resume(thread, handleStop(thread, status));
        return false;
    }

    /** @return the signal to deliver to the thread */
    int handleStop(pid_t thread, int status)
    {
        const int signal = WSTOPSIG(status);
        if (signal == (SIGTRAP | 0x80)) {
            handleCall(thread);
            return 0;
        }
        // A new thread begins with a stop of its own.
        const bool isNew = signal == SIGSTOP && thread != program_;
        return signal == SIGTRAP || isNew ? 0 : signal;
    }

    void handleCall(pid_t thread)
    {
        __ptrace_syscall_info info = {};
        if (!reached(ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info), "look at a call")) {
            return;
        }
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            SystemCall call = {.number = info.entry.nr, .arguments = {}};
            std::copy(std::begin(info.entry.args), std::end(info.entry.args), call.arguments.begin());
            handleEntry(thread, call);
        } else if (info.op == PTRACE_SYSCALL_INFO_EXIT) {
            handleExit(thread, info.exit.rval);
        }
    }

    void handleEntry(pid_t thread, const SystemCall& call)
    {
        asksForBreak_ = call.number == SYS_brk;
        // The loader's calls are not the program's. The first thing that main() does about signals ends them.
        inMain_ = inMain_ || (call.number == SYS_rt_sigaction && call.arguments[0] == SIGXFSZ);
        if (inMain_ && terminal_ != nullptr && waitsForInput(call)) {
            terminal_->type();
        }
        for (std::size_t i = 0; inMain_ && i < faults_.size(); ++i) {
            const CallFault& fault = faults_[i];
            if (fault.matches(call) && fails(fault, ++matching_[i])) {
                skipCall(thread);
                // The kernel tells of a break that it cannot move by the one that it leaves.
                skipped_[thread] = call.number == SYS_brk ? break_ : -static_cast<long>(fault.error);
                return;
            }
        }
    }

    void handleExit(pid_t thread, long result)
    {
        if (skipped_.contains(thread)) {
            setCallResult(thread, skipped_[thread]);
            skipped_.erase(thread);
        } else if (asksForBreak_) {
            break_ = result;
        }
        asksForBreak_ = false;
    }

    static bool fails(const CallFault& fault, int number)
    {
        return fault.occurrence == 0 || number == fault.occurrence || (fault.lasts && number > fault.occurrence);
    }

    static void resume(pid_t thread, int signal)
    {
        // It may have been killed meanwhile, which the next wait tells.
        ptrace(PTRACE_SYSCALL, thread, 0, signal);
    }

    pid_t program_;
    const CallFaults& faults_;
    Terminal* terminal_;
    std::vector<int> matching_;
    bool inMain_ = false;
    /** The results of the calls that are not made, by thread. */
    std::map<pid_t, long> skipped_{};
    bool asksForBreak_ = false;
    long break_ = 0;
};

}  // namespace

bool canTrace()
{
    if (!kKnowsMachine) {
        return false;
    }
    const pid_t child = fork();
    if (child == 0) {
        _exit(ptrace(PTRACE_TRACEME, 0, 0, 0) == 0 ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TracedRun runWithFaults(const TracedCommand& command, const CallFaults& faults)
{
    const MemoryFile file(command.input);
    std::optional<Terminal> terminal;
    if (!command.keys.empty()) {
        terminal.emplace(command.keys);
    }
    const int input = terminal ? terminal->descriptor() : file.descriptor();
    const MemoryFile output;
    const MemoryFile error;
    const pid_t program = fork();
    if (program == 0) {
        becomeTraced(command, {input, output.descriptor(), error.descriptor()});
    }
    checked(program, "fork");
    TracedRun run;
    Tracer(program, faults, terminal ? &*terminal : nullptr).follow(run);
    run.output = output.contents();
    run.error = error.contents();
    return run;
}

}  // namespace faults_test
