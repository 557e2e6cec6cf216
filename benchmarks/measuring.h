// Measures trials.

#ifndef TAVREN_BENCHMARKS_MEASURING_H
#define TAVREN_BENCHMARKS_MEASURING_H

#include <string>

#include "trial.h"

namespace kel::tavren::benchmarks {

// Measures time with Google Benchmark and its options. Returns the exit status.
int measure_time(const Programme &programme, int argc, char **argv);

// Counts instructions of the calling thread. Run this under callgrind with --instr-atstart=no and
// --collect-atstart=no. Dumps each entry that matches the regular expression under its name, from a
// separate process. Returns the exit status.
int count_instructions(const Programme &programme, const std::string &regex);

// Runs one entry once and dumps the instructions of each thread. Run this under callgrind with
// --instr-atstart=no. Returns the exit status.
int trace(const Programme &programme, const std::string &name);

}  // namespace kel::tavren::benchmarks

#endif
