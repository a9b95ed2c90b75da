#include "program_run.hpp"

#include <algorithm>
#include <cstdlib>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xvr_color_test {

namespace {

[[noreturn]] void become_program(const std::string& program, const std::vector<std::string>& arguments,
                                 const std::string& folder, int out_pipe, int err_pipe)
{
    dup2(out_pipe, STDOUT_FILENO);
    dup2(err_pipe, STDERR_FILENO);
    if (chdir(folder.c_str()) != 0) {
        _exit(126);
    }
    unsetenv("LD_LIBRARY_PATH");
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
}

// Reads both pipes until both are closed, whichever the program fills first.
void collect(int out_fd, int err_fd, Program_run& run)
{
    pollfd fds[2] = {{out_fd, POLLIN, 0}, {err_fd, POLLIN, 0}};
    std::string* sinks[2] = {&run.out, &run.err};
    int open_count = 2;
    while (open_count > 0) {
        if (poll(fds, 2, -1) < 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) {
                continue;
            }
            char buffer[4096];
            ssize_t count = read(fds[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(count));
            } else {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open_count;
            }
        }
    }
}

} // namespace

Program_run run_program(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& folder)
{
    Program_run run;
    int out_pipe[2], err_pipe[2];
    if (pipe(out_pipe) != 0 || pipe(err_pipe) != 0) {
        return run;
    }
    pid_t child = fork();
    if (child == 0) {
        close(out_pipe[0]);
        close(err_pipe[0]);
        become_program(program, arguments, folder, out_pipe[1], err_pipe[1]);
    }
    close(out_pipe[1]);
    close(err_pipe[1]);
    collect(out_pipe[0], err_pipe[0], run);
    int status = 0;
    waitpid(child, &status, 0);
    run.exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

int line_count(const std::string& text)
{
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace xvr_color_test
