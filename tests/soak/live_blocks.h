// The blocks of memory that C++ code of this process has made and not yet given back: the program's
// own operators new and delete count those of the library too.

#ifndef TAVREN_TESTS_LIVE_BLOCKS_H
#define TAVREN_TESTS_LIVE_BLOCKS_H

namespace kel::tavren::tests {

long live_blocks() noexcept;

}  // namespace kel::tavren::tests

#endif
