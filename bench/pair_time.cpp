// Times commands against a peer: pair_time ROUNDS LABEL COMMAND [LABEL COMMAND]...
//
// The first command is the peer. All run in turn, round by round, after one round of warming up, so that what else the
// machine does meets them alike. Of each the median processor time (user and system) is printed, its median ratio to
// the peer of the same round with the smallest and the largest, and the peak memory. A command is given to sh; one that
// ends with a code other than 0 ends this program with 1.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct CRun {
    double m_seconds = 0;
    long m_peakKilobytes = 0;
};

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

CRun Run(const char* command) {
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command, static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "pair_time: this failed: %s\n", command);
        std::exit(1);
    }
    return {Seconds(usage.ru_utime) + Seconds(usage.ru_stime), usage.ru_maxrss};
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 4 || argumentCount % 2 != 0) {
        std::fprintf(stderr, "usage: pair_time ROUNDS LABEL COMMAND [LABEL COMMAND]...\n");
        return 2;
    }
    const int rounds = std::atoi(arguments[1]);
    const int commandCount = (argumentCount - 2) / 2;
    std::vector<std::vector<CRun>> runs(static_cast<std::size_t>(commandCount));
    for (int round = -1; round < rounds; ++round) {
        for (int i = 0; i < commandCount; ++i) {
            const CRun run = Run(arguments[3 + 2 * i]);
            if (round >= 0) runs[static_cast<std::size_t>(i)].push_back(run);
        }
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        std::vector<double> seconds;
        std::vector<double> ratios;
        long peak = 0;
        for (std::size_t round = 0; round < runs[i].size(); ++round) {
            seconds.push_back(runs[i][round].m_seconds);
            ratios.push_back(runs[i][round].m_seconds / std::max(runs[0][round].m_seconds, 1e-6));
            peak = std::max(peak, runs[i][round].m_peakKilobytes);
        }
        const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
        std::printf("| %s | %.3f | %.2f | %.2f-%.2f | %.1f |\n", arguments[2 + 2 * i], Median(seconds), Median(ratios),
                    *least, *most, static_cast<double>(peak) / 1024);
    }
    return 0;
}
