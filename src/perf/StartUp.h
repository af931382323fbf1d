// Where the time goes from the start of the process to the first bars on the screen.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Notes the stages of a start. Main thread.
class StartUp {
 public:
    /// The process has come to `stage`; counts once each. At "drawn" the answer is the line that tells all of them, in
    /// seconds since the process began: "[perf] start-up s: relay 0.02  window 0.31  drawn 0.70". Nothing is noted
    /// after that.
    std::optional<std::string> stage(std::string_view stage);

 private:
    std::string line_;
    bool over_ = false;
};

}  // namespace vmr
