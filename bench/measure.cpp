// Runs two programs in turn and compares what they cost:
//
//     measure SECONDS FOLDER OUTPUT... -- PROGRAM [ARGUMENT...] -- OTHER [ARGUMENT...]
//
// Both run inside FOLDER, alternately, for about SECONDS and at least five times each, after one
// run each that does not count. Every OUTPUT is removed before each run, so that no run pays for
// dropping the output of the one before. Prints one line of medians:
//
//     CPU OTHER-CPU CPU-RATIO WALL OTHER-WALL WALL-RATIO PEAK PAIRS
//
// CPU is user and system time, WALL the time from start to end, both in seconds; a ratio is the
// median of the ratios of the pairs; PEAK is the largest resident memory of PROGRAM in bytes.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// Arguments as exec takes them, with a null at the end.
using Command = std::vector<char*>;

struct Cost {
    double cpu = 0;
    double wall = 0;
    double peak = 0;
};

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

Cost run(const Command& command, const std::vector<char*>& outputs) {
    for (const char* output : outputs) {
        unlink(output);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const Clock::time_point start = Clock::now();
    pid_t child = 0;
    if (posix_spawn(&child, command[0], &actions, nullptr, command.data(), environ) != 0) {
        std::fprintf(stderr, "measure: cannot run %s\n", command[0]);
        std::exit(1);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "measure: %s failed\n", command[0]);
        std::exit(1);
    }
    const std::chrono::duration<double> wall = Clock::now() - start;
    posix_spawn_file_actions_destroy(&actions);
    // The system counts the peak in KiB.
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime), wall.count(),
            static_cast<double>(usage.ru_maxrss) * 1024};
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The cost of both programs, pair by pair.
using Pairs = std::vector<std::pair<Cost, Cost>>;

Pairs measure(const Command& one, const Command& other, const std::vector<char*>& outputs,
              double forSeconds) {
    constexpr std::size_t fewest = 5;
    constexpr std::size_t most = 1001;
    run(one, outputs);
    run(other, outputs);
    Pairs pairs;
    const Clock::time_point start = Clock::now();
    const std::chrono::duration<double> limit(forSeconds);
    while (pairs.size() < fewest || (Clock::now() - start < limit && pairs.size() < most)) {
        // The order changes, since who comes second may find warmer caches.
        std::pair<Cost, Cost> pair;
        if (pairs.size() % 2 == 0) {
            pair.first = run(one, outputs);
            pair.second = run(other, outputs);
        } else {
            pair.second = run(other, outputs);
            pair.first = run(one, outputs);
        }
        pairs.push_back(pair);
    }
    return pairs;
}

template <class Value>
double medianOf(const Pairs& pairs, Value value) {
    std::vector<double> values;
    for (const auto& [one, other] : pairs) {
        values.push_back(value(one, other));
    }
    return median(std::move(values));
}

}  // namespace

int main(int argumentCount, char** arguments) {
    std::vector<Command> parts(1);
    for (int i = 3; i < argumentCount; ++i) {
        if (std::string_view(arguments[i]) == "--") {
            parts.emplace_back();
        } else {
            parts.back().push_back(arguments[i]);
        }
    }
    if (parts.size() != 3 || parts[1].empty() || parts[2].empty()) {
        std::fprintf(stderr, "usage: measure SECONDS FOLDER OUTPUT... -- PROGRAM [ARGUMENT...] "
                             "-- OTHER [ARGUMENT...]\n");
        return 2;
    }
    const std::vector<char*> outputs = parts[0];
    parts[1].push_back(nullptr);
    parts[2].push_back(nullptr);
    if (chdir(arguments[2]) != 0) {
        std::perror(arguments[2]);
        return 1;
    }
    const Pairs pairs = measure(parts[1], parts[2], outputs, std::strtod(arguments[1], nullptr));
    std::printf(
        "%.6f %.6f %.4f %.6f %.6f %.4f %.0f %zu\n",
        medianOf(pairs, [](const Cost& one, const Cost&) { return one.cpu; }),
        medianOf(pairs, [](const Cost&, const Cost& other) { return other.cpu; }),
        medianOf(pairs, [](const Cost& one, const Cost& other) { return one.cpu / other.cpu; }),
        medianOf(pairs, [](const Cost& one, const Cost&) { return one.wall; }),
        medianOf(pairs, [](const Cost&, const Cost& other) { return other.wall; }),
        medianOf(pairs, [](const Cost& one, const Cost& other) { return one.wall / other.wall; }),
        medianOf(pairs, [](const Cost& one, const Cost&) { return one.peak; }), pairs.size());
    return 0;
}
