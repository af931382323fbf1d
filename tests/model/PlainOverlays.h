// The overlay series as their definitions read, from bars and the date library's calendar; of the program's, the
// records alone.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "model/OverlayBuilder.h"
#include "model/PlainBars.h"

namespace vmr::test {

std::vector<OvColorPoint> plainHf(const Bars& bars, const HfByMin& flow, int tf, int hhmm, double fallback,
                                  const SRSessions& levels);

/// Compares each series with what it should be, and adds the points that were compared to `compared`, by series. `what`
/// stands in the messages.
void expectPlain(const OverlaySet& got, const OverlayInput& in, const std::string& what,
                 std::map<std::string, std::size_t>& compared);

}  // namespace vmr::test
