#pragma once

// What the benchmarks share: the times of a run kept for the ratios printed at its end, and the
// start of a host command as a baseline.

#include <benchmark/benchmark.h>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <set>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace kestrova::bench {

// Keeps each benchmark's time per iteration so that the ratios can be printed at the end: the
// median of its repetitions where it is repeated, which a disturbance of the machine in one of
// them does not move.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const std::string& name = run.run_name.function_name;
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.error_occurred || (!median && (run.run_type != Run::RT_Iteration || medians.count(name))))
                continue;
            times[name] = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (median)
                medians.insert(name);
        }
    }
    std::map<std::string, double> times; // seconds
    std::set<std::string> medians;
};

inline void PrintRatio(const RatioReporter& r, const char* what, const std::string& name,
                       const std::string& baseline, double goal) {
    const auto a = r.times.find(name), b = r.times.find(baseline);
    if (a == r.times.end() || b == r.times.end())
        return;
    const double ratio = a->second / b->second;
    std::printf("%-58s %9.3f ms vs %9.3f ms  ratio %6.2f%s\n", what, a->second * 1e3, b->second * 1e3, ratio,
                goal > 0 ? (ratio <= goal ? "  (goal met)" : "  (goal missed)") : "");
}

// Runs a host command with its output thrown away and waits for it; false when it cannot start
// or does not end well.
inline bool RunQuietly(const std::vector<std::string>& command) {
    std::vector<char*> argv;
    for (const std::string& word : command)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const bool started = posix_spawnp(&pid, argv.front(), &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return started && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace kestrova::bench
