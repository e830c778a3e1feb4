#include "support/ratios.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace bench {

namespace {

constexpr char kInterleaving[] = "--benchmark_enable_random_interleaving=true";

// Keeps each repetition's time, in seconds, and shows the aggregates alone. (The library's option
// for that keeps the repetitions from the reporter.)
class Collector : public benchmark::ConsoleReporter {
  public:
    Collector() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run> &runs) override {
        std::vector<Run> shown;
        for (const Run &run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) {
                shown.push_back(run);
                continue;
            }
            times_[run.run_name.function_name + Arguments(run)].push_back(
                run.real_accumulated_time / static_cast<double>(run.iterations));
        }
        if (!shown.empty()) {
            ConsoleReporter::ReportRuns(shown);
        }
    }

    // The median in seconds; 0 when the benchmark did not run.
    double Median(const std::string &name) {
        std::vector<double> &times = times_[name];
        if (times.empty()) {
            return 0;
        }
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    }

  private:
    static std::string Arguments(const Run &run) {
        return run.run_name.args.empty() ? "" : "/" + run.run_name.args;
    }

    std::map<std::string, std::vector<double>> times_;
};

// A benchmark's median over that of its base; 0 when either was not measured.
double Side(Collector &collector, const std::string &name, const std::string &base) {
    const double median = collector.Median(name);
    if (base.empty()) {
        return median;
    }
    const double base_median = collector.Median(base);
    return base_median == 0 ? 0 : median / base_median;
}

void Print(const Ratio &ratio, Collector &collector) {
    const double numerator = Side(collector, ratio.numerator, ratio.numerator_base);
    const double denominator = Side(collector, ratio.denominator, ratio.denominator_base);
    if (numerator == 0 || denominator == 0) {
        std::printf("%-60s not measured\n", ratio.name.c_str());
        return;
    }
    const double value = numerator / denominator;
    const bool reached = ratio.at_least ? value >= ratio.goal : value <= ratio.goal;
    std::printf("%-60s %8.2f   (%s %.2f%s)\n", ratio.name.c_str(), value,
                ratio.at_least ? "at least" : "at most", ratio.goal, reached ? "" : ": MISSED");
}

}  // namespace

int Run(int argc, char **argv, const std::vector<Ratio> &ratios, int repetitions) {
    const std::string repetitions_option = "--benchmark_repetitions=" + std::to_string(repetitions);
    std::vector<char *> arguments(argv, argv + argc);
    for (const char *option : {repetitions_option.c_str(), kInterleaving}) {
        arguments.insert(arguments.begin() + 1, const_cast<char *>(option));
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    std::printf("\n");
    for (const Ratio &ratio : ratios) {
        Print(ratio, collector);
    }
    return 0;
}

}  // namespace bench
