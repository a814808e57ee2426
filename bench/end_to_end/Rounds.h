// Measurements that take turns.

#ifndef BENCH_END_TO_END_ROUNDS_H
#define BENCH_END_TO_END_ROUNDS_H

#include <functional>
#include <string>

namespace bench {

// Runs something once and returns the measured number, usually seconds.
using Measurement = std::function<double()>;

// Makes the measurement of a case, which is an argument of the program. Throws
// std::invalid_argument for an unknown case.
using MakeMeasurement = std::function<Measurement(const std::string& argument)>;

double secondsOf(const std::function<void()>& run);

// Implements the main function of a program with the arguments WARM_UPS ROUNDS CASE...
//
// Each round runs every case once, so that a disturbance of the machine meets all cases. Prints one
// line for each round after the warm-ups: the numbers of the cases, in the order of the arguments.
// Errors: returns the exit status; reports exceptions on standard error.
int measureInTurns(int argc, char* argv[], const MakeMeasurement& measurementOf);

// The count after the colon of "NAME:COUNT"; 0 without a colon. Throws std::invalid_argument for
// other text.
std::size_t countIn(const std::string& argument);

// "NAME" of "NAME:COUNT".
std::string nameIn(const std::string& argument);

}  // namespace bench

#endif
