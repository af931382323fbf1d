// Which contract of a futures root is the front month.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vmr::relay {

/// The front contract on a New York date (days since 1970), with a one-digit year: "NQM6". The equity roots run
/// quarterly and roll on the second Thursday of the contract's month; GC runs on the even months and rolls on the 27th
/// of the month before; CL runs monthly and rolls on the 19th of the month before. Empty for an unknown root.
std::string frontContract(std::string_view root, std::int64_t date);

/// Root to front contract of all roots.
std::map<std::string, std::string> frontContracts(std::int64_t date);

}  // namespace vmr::relay
