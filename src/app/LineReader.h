// The lines that a person or a script types.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/SerialQueue.h"

namespace vmr {

/// Reads standard input on a thread of its own and hands each line to `take` on `loop`, which outlives the reader; none
/// comes after its destruction. The end of the input ends nothing.
class LineReader {
 public:
    LineReader(MainLoop& loop, std::function<void(const std::string&)> take);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

 private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

}  // namespace vmr
