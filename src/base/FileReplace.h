// Files that are replaced whole or not at all.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Makes `path` hold exactly `bytes`: written beside it, flushed to the disk, renamed over it, and the folder flushed.
/// Missing folders are made. File and new folders are readable by their owner only. Returns nothing on success, else
/// what failed; the old file is then untouched.
std::optional<std::string> replaceFile(const std::filesystem::path& path, std::string_view bytes);

/// Makes the folder and those above it that are missing, for their owner only; what failed.
std::optional<std::string> makePrivateFolders(const std::filesystem::path& folder);

/// The whole file, or nothing when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);

}  // namespace vmr
