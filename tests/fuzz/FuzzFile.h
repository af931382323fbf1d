// Bytes as a file, for readers that take nothing else.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "base/Uuid.h"

namespace vmr::fuzz {

/// A file of its own in the machine's folder for such, until it goes.
class FuzzFile {
 public:
    explicit FuzzFile(std::string_view bytes)
        : path_(std::filesystem::temp_directory_path() / ("vmr-fuzz-" + UuidSource().next().text())) {
        std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    ~FuzzFile() { std::filesystem::remove(path_); }
    FuzzFile(const FuzzFile&) = delete;
    const std::filesystem::path& path() const { return path_; }

 private:
    std::filesystem::path path_;
};

}  // namespace vmr::fuzz
