#pragma once

#include "AppTestFiles.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace Kelvor {

// Runs the tarnwick-view program, which the build puts beside the test
// programs, and keeps what it printed and how it ended.
struct ViewRun
{
    bool started = false;
    bool exited = false;
    int exitCode = -1;
    // Non-zero when the program died of a signal (a crash).
    int signal = 0;
    // It ran past the time it was given and was killed.
    bool hung = false;
    std::string out;
    std::string err;
};

inline std::string viewProgramPath()
{
    char self[PATH_MAX];
    ssize_t const length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return "tarnwick-view";
    std::string path(self, static_cast<std::size_t>(length));
    return path.substr(0, path.find_last_of('/') + 1) + "tarnwick-view";
}

// A program started with startViewProgram; finishViewProgram waits for it.
struct ViewProcess
{
    pid_t pid = -1;
    std::string outPath;
    std::string errPath;
};

// `unsetDisplay` runs the program as on a machine without X.
inline ViewProcess startViewProgram(std::vector<std::string> const& arguments, bool unsetDisplay = false)
{
    static int counter = 0;
    ViewProcess process;
    std::string const base = "/tmp/tarnwick-view-run-" + std::to_string(::getpid()) + "-" + std::to_string(++counter);
    process.outPath = base + ".out";
    process.errPath = base + ".err";
    std::string const program = viewProgramPath();
    pid_t const child = ::fork();
    if (child == 0) {
        int const out = ::open(process.outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int const err = ::open(process.errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(out, 1);
        ::dup2(err, 2);
        if (unsetDisplay)
            ::unsetenv("DISPLAY");
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(program.c_str()));
        for (std::string const& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(126);
    }
    process.pid = child;
    return process;
}

// Waits for the program; one still running after `limit` is killed and
// reported as hung.
inline ViewRun finishViewProgram(ViewProcess const& process,
                                 std::chrono::seconds limit = std::chrono::seconds(120))
{
    ViewRun run;
    int status = 0;
    if (process.pid <= 0)
        return run;
    auto const deadline = std::chrono::steady_clock::now() + limit;
    pid_t done = 0;
    while ((done = ::waitpid(process.pid, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (done == 0) {
        run.hung = true;
        ::kill(process.pid, SIGKILL);
        done = ::waitpid(process.pid, &status, 0);
    }
    if (done != process.pid)
        return run;
    run.started = !(WIFEXITED(status) && WEXITSTATUS(status) == 126);
    run.exited = WIFEXITED(status);
    run.exitCode = run.exited ? WEXITSTATUS(status) : -1;
    run.signal = WIFSIGNALED(status) && !run.hung ? WTERMSIG(status) : 0;
    run.out = apptest::readWhole(process.outPath);
    run.err = apptest::readWhole(process.errPath);
    std::remove(process.outPath.c_str());
    std::remove(process.errPath.c_str());
    return run;
}

inline ViewRun runViewProgram(std::vector<std::string> const& arguments, bool unsetDisplay = false,
                              std::chrono::seconds limit = std::chrono::seconds(120))
{
    return finishViewProgram(startViewProgram(arguments, unsetDisplay), limit);
}

} // namespace Kelvor
