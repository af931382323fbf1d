// How often the program asked for memory; the program must be linked with AllocationCount.cpp.
#pragma once

namespace vmr::test {

/// Calls of operator new so far, in all threads.
long allocationCount();

}  // namespace vmr::test
