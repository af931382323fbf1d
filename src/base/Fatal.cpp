#include "base/Fatal.h"

#include <cstdio>
#include <cstdlib>

namespace vmr {

namespace {
std::function<void(std::string_view)>& handler() {
    static std::function<void(std::string_view)> current;
    return current;
}
}  // namespace

void fatal(std::string_view reason) {
    if (handler()) {
        handler()(reason);
    } else {
        std::fprintf(stderr, "velmora: fatal: %.*s\n", static_cast<int>(reason.size()), reason.data());
    }
    std::abort();
}

void setFatalHandler(std::function<void(std::string_view)> replacement) { handler() = std::move(replacement); }

}  // namespace vmr
