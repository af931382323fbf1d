// Where the program keeps its files.
#pragma once

#include <filesystem>
#include <optional>

namespace vmr {

/// The two folders of a profile. They need not exist yet.
struct Paths {
    std::filesystem::path config;  ///< settings and the stored session
    std::filesystem::path data;    ///< the simulator account

    /// The user's own profile: `Velmora` under XDG_CONFIG_HOME and XDG_DATA_HOME, or their platform equivalents. Where
    /// the environment names no home folder, the system is asked for the account's; nothing when it knows none either.
    /// Both are absolute.
    static std::optional<Paths> user();

    /// The practice profile: a folder of its own beneath the user's, which nothing but practice writes.
    static std::optional<Paths> practice();
};

}  // namespace vmr
