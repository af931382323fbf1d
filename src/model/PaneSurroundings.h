// What a pane is given.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Clock.h"
#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Uuid.h"
#include "market/SessionTime.h"
#include "model/HfScales.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/feed/RelayClient.h"
#include "store/GexConfig.h"

namespace vmr {

class Perf;
class SimEngine;

/// Everything in it outlives the pane.
struct PaneSurroundings {
    const Clock& clock;
    MainLoop& main;
    Preferences& preferences;
    FirebaseRESTAuth& auth;  ///< the process's one session
    SessionTime& session;    ///< the main thread's; the account and the chart go by the same one
    UuidSource& ids;
    HfScales& hfScales;  ///< the process's one
    std::function<std::unique_ptr<RelayClient>()> makeRelay;
    std::function<void(const std::string& line)> print;           ///< one whole line to standard output
    std::function<void(const std::string& line)> printMessage{};  ///< also for each logged message; may be empty
    SimEngine* sim = nullptr;                                     ///< the process's one account; null for none
    const Clock* machine = nullptr;     ///< with a practice market: the machine's own time, which tells what today is
    Perf* perf = nullptr;               ///< where work is timed; may be null
    std::optional<GexConfig> config{};  ///< to start with instead of the stored settings
    bool saveSettings = true;           ///< false: changed settings are not stored
    bool strictFeed = false;            ///< a number of the feed that fits no integer is fatal
    bool rebuildInDrags = false;        ///< a drag holds no overlay rebuild back
};

}  // namespace vmr
