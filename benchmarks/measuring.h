// How trials are measured.

#ifndef TAVREN_BENCHMARKS_MEASURING_H
#define TAVREN_BENCHMARKS_MEASURING_H

#include <string>

#include "trial.h"

namespace kel::tavren::benchmarks {

// In time, with Google Benchmark and its options. Returns the exit status.
int measure_time(const Programme &programme, int argc, char **argv);

// In instructions of the calling thread, when run by callgrind with --instr-atstart=no and
// --collect-atstart=no: each entry whose name the regular expression finds is dumped under its
// name, from a process of its own. Returns the exit status.
int count_instructions(const Programme &programme, const std::string &regex);

// Runs one entry once, when run by callgrind with --instr-atstart=no: what each thread executes is
// dumped. Returns the exit status.
int trace(const Programme &programme, const std::string &name);

}  // namespace kel::tavren::benchmarks

#endif
