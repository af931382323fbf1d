// Option expirations: which are on offer, and how they are written. Moments are seconds since 1970, market time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vmr {

/// This week's and next week's of the expirations in `list` (yyyy-MM-dd), ascending, from today on in New York, and
/// from tomorrow on once it is 20:00 there. A Saturday belongs to the week before it, a Sunday to the week after it.
/// Compared as text.
std::vector<std::string> computeFutureExps(const std::vector<std::string>& list, double now);

/// "6/12 (3DTE)": month, day and the weekdays from today to then in New York; 0 for today or before. Text that is no
/// date comes back as it is.
std::string expLabel(const std::string& iso, double now);

/// "3DTE Fri 6/12": the same count from the machine's own day, as `localDay` tells it.
std::string expDteLabel(const std::string& iso, double now);

/// "ODTE Wed 6/10": today in New York.
std::string odteLabel(double now);

}  // namespace vmr
