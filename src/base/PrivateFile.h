// Files and folders that are this user's alone.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Makes the folder and those above it that are missing, for their owner only. One that is there already must belong to
/// this user and is closed to all others, unless it is meant to be shared (a sticky one, such as /tmp); a link to it
/// counts only if it is this user's or the system's. Gives what is wrong.
std::optional<std::string> makePrivateFolders(const std::filesystem::path& folder);

/// Writes a new file in a folder that `makePrivateFolders` has accepted, flushed to the disk. Whatever stands at `path`
/// already, a link too, fails it. Gives what is wrong; the file may then be there in part.
std::optional<std::string> writeNewPrivateFile(const std::filesystem::path& path, std::string_view bytes);

/// The whole file. Nothing when it cannot be read, is a link or no plain file, or belongs to another user; one that
/// others could read is closed to them first, and not read where that fails.
std::optional<std::string> readPrivateFile(const std::filesystem::path& path);

/// Opens a plain file of this user for locking, or makes it, closed to all others: a handle of the platform's, or -1.
int openPrivateFile(const std::filesystem::path& path);

}  // namespace vmr
