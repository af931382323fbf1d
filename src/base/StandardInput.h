// Standard input for a thread that is left behind at the end of the process.
#pragma once

#include <iostream>

namespace vmr {

/// Lets `std::cin` read without the C library's lock on its input. A thread that waits for a line would hold that lock,
/// and from version 2.41 on glibc's `exit` waits for it: a window would stay until somebody typed a line. To be called
/// before that thread starts.
inline void readStandardInputUnlocked() { std::ios::sync_with_stdio(false); }

}  // namespace vmr
