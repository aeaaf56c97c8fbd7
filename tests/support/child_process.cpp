#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace child_process
{
namespace
{

void check(int error, const char* operation)
{
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), operation);
    }
}

int checkedDescriptor(int descriptor, const char* operation)
{
    check(descriptor < 0 ? errno : 0, operation);
    return descriptor;
}

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() { close(descriptor_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return descriptor_; }

private:
    int descriptor_;
};

/** A file in memory: no reader is needed for a child to get rid of its output. */
class MemoryFile
{
public:
    MemoryFile() : file_(checkedDescriptor(memfd_create("child", MFD_CLOEXEC), "memfd_create")) {}

    int descriptor() const { return file_.get(); }

    void fill(std::string_view text) const
    {
        const bool filled = pwrite(file_.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
        check(filled ? 0 : errno, "pwrite");
    }

    std::string text() const
    {
        struct stat status {
        };
        check(fstat(file_.get(), &status) == 0 ? 0 : errno, "fstat");
        std::string text(static_cast<std::size_t>(status.st_size), '\0');
        check(pread(file_.get(), text.data(), text.size(), 0) == status.st_size ? 0 : errno, "pread");
        return text;
    }

private:
    Descriptor file_;
};

struct StandardFiles {
    MemoryFile input;
    MemoryFile output;
    MemoryFile error;
};

/** What posix_spawn() is told about the child's files. */
class FileActions
{
public:
    FileActions() { check(posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init"); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void redirect(const MemoryFile& file, int descriptor)
    {
        check(posix_spawn_file_actions_adddup2(&actions_, file.descriptor(), descriptor), "adddup2");
    }

    void changeFolder(const std::string& folder)
    {
        check(posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()), "addchdir");
    }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::string>& changes)
{
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::size_t equals = variable.find('=');
        if (equals != std::string_view::npos) {
            variables.emplace(variable.substr(0, equals), variable.substr(equals + 1));
        }
    }
    for (const auto& [name, value] : changes) {
        variables.insert_or_assign(name, value);
    }
    std::vector<std::string> environment;
    for (const auto& [name, value] : variables) {
        environment.push_back(name);
        environment.back().append("=").append(value);
    }
    return environment;
}

/** The texts as an array that ends in a null pointer; valid as long as the texts are. */
std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/** Crashes are part of the tests; their core files would only be in the way. */
void suppressCoreFiles()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = 0;
        setrlimit(RLIMIT_CORE, &limit);
    }
}

// By number, since the C library declares its own wrapper without C linkage.
int openProcess(pid_t process)
{
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

Result waitFor(pid_t child, std::chrono::milliseconds timeout, const StandardFiles& files)
{
    Result result;
    const Descriptor process(checkedDescriptor(openProcess(child), "pidfd_open"));
    pollfd ended{.fd = process.get(), .events = POLLIN, .revents = 0};
    int ready = -1;
    do {
        ready = poll(&ended, 1, static_cast<int>(timeout.count()));
    } while (ready < 0 && errno == EINTR);
    if (ready != 1) {
        result.timedOut = true;
        kill(child, SIGKILL);
    }
    int status = 0;
    check(waitpid(child, &status, 0) == child ? 0 : errno, "waitpid");
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result.output = files.output.text();
    result.error = files.error.text();
    return result;
}

[[noreturn]] void becomeChild(const StandardFiles& files, const std::function<void()>& function) noexcept
{
    suppressCoreFiles();
    const std::array<const MemoryFile*, 3> standard{&files.input, &files.output, &files.error};
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        if (dup2(standard.at(static_cast<std::size_t>(descriptor))->descriptor(), descriptor) < 0) {
            std::abort();
        }
    }
    function();
    std::exit(EXIT_SUCCESS);  // NOLINT(concurrency-mt-unsafe): the copy has one thread
}

}  // namespace

Result run(const Command& command)
{
    suppressCoreFiles();
    const StandardFiles files;
    files.input.fill(command.input);
    FileActions actions;
    actions.redirect(files.input, STDIN_FILENO);
    actions.redirect(files.output, STDOUT_FILENO);
    actions.redirect(files.error, STDERR_FILENO);
    if (!command.folder.empty()) {
        actions.changeFolder(command.folder);
    }
    std::vector<std::string> arguments = command.arguments;
    std::vector<std::string> environment = mergedEnvironment(command.environment);
    const std::vector<char*> argv = pointersTo(arguments);
    const std::vector<char*> envp = pointersTo(environment);
    pid_t child = -1;
    check(posix_spawnp(&child, argv.front(), actions.get(), nullptr, argv.data(), envp.data()), argv.front());
    return waitFor(child, command.timeout, files);
}

Result runForked(const std::function<void()>& function, std::chrono::milliseconds timeout)
{
    const StandardFiles files;
    std::fflush(nullptr);
    const pid_t child = fork();
    check(child < 0 ? errno : 0, "fork");
    if (child == 0) {
        becomeChild(files, function);
    }
    return waitFor(child, timeout, files);
}

}  // namespace child_process
