// Runs the registered benchmarks several times and prints, beside their own figures, the ratios
// that the product is held to: the median of one benchmark over the median of its peer, measured in
// the same run.
#ifndef BENCH_SUPPORT_RATIOS_H
#define BENCH_SUPPORT_RATIOS_H

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace bench {

// One ratio to print.
struct Ratio {
    std::string name;       // what is compared, in words
    std::string numerator;  // benchmark names
    std::string denominator;
    double goal;            // what it is to reach
    bool at_least = false;  // otherwise at most
    // With both, how much each side grew is compared: numerator over its base, denominator over
    // its.
    std::string numerator_base = {};
    std::string denominator_base = {};
};

inline constexpr int kRepetitions = 5;

// Runs every registered benchmark in so many interleaved repetitions and prints the ratios of the
// medians. Always gives 0: a ratio beyond its goal is marked, never asserted.
int Run(int argc, char **argv, const std::vector<Ratio> &ratios, int repetitions = kRepetitions);

}  // namespace bench

#endif  // BENCH_SUPPORT_RATIOS_H
