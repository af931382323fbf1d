// Files that are replaced whole or not at all.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Makes `path` hold exactly `bytes`: written beside it under a name that is new each time, flushed to the disk,
/// renamed over it, and the folder flushed. The folder is made, or must be, this user's alone (`makePrivateFolders`);
/// so is the file. Returns nothing on success, else what failed; the old file is then untouched.
std::optional<std::string> replaceFile(const std::filesystem::path& path, std::string_view bytes);

/// The same in a folder that is left as it is, and must be there; the file is this user's alone all the same. For files
/// that a person names.
std::optional<std::string> replacePrivateFile(const std::filesystem::path& path, std::string_view bytes);

/// Removes what writers of `path` left beside it when they were killed. While nobody writes it.
void removeLeftovers(const std::filesystem::path& path);

/// The whole file, or nothing when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);

}  // namespace vmr
