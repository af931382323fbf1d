// Runs a fuzz target's entry over every file of the given folders, where no fuzzer drives it.
#include <cstdio>
#include <filesystem>

#include "FuzzEntry.h"
#include "base/FileReplace.h"

int main(int count, char** arguments) {
    int ran = 0;
    for (int i = 1; i < count; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
            const auto bytes = vmr::readFile(entry.path());
            if (!bytes) {
                std::fprintf(stderr, "cannot read %s\n", entry.path().c_str());
                return 1;
            }
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size());
            ++ran;
        }
    std::printf("%d seeds\n", ran);
    return ran > 0 ? 0 : 1;
}
