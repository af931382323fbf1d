// Runs a fuzz target over every file of a folder, where no fuzzer drives it.
#include <cstdio>
#include <filesystem>

#include "FuzzEntry.h"
#include "base/FileReplace.h"

int main(int, char** arguments) {
    int ran = 0;
    for (const auto& seed : std::filesystem::directory_iterator(arguments[1])) {
        vmr::fuzz::take(vmr::readFile(seed.path()).value());
        ++ran;
    }
    std::printf("%d seeds\n", ran);
    return ran > 0 ? 0 : 1;
}
