#include "FuzzEntry.h"

#include <cstdint>

// Where libFuzzer comes in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vmr::fuzz::take({reinterpret_cast<const char*>(data), size});
    return 0;
}
