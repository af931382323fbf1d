// Process start.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/HeadlessShell.h"
#include "app/Options.h"
#include "app/ProgramStart.h"
#include "base/Environment.h"
#include "base/Log.h"
#include "base/Version.h"
#include "model/BarRollSelfTest.h"
#include "perf/Perf.h"
#ifdef VMR_WITH_QT
#include "app/WindowProgram.h"
#endif

namespace {

int selfTest() {
    const vmr::BarRollResult result = vmr::runBarRollSelfTest();
    vmr::Log::standardOutput().lines(std::string("[barroll-test] ") + (result.ok ? "PASS" : "FAIL") + "\n  " +
                                     result.summary);
    return result.ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (vmr::environment("VMR_BARROLL_TEST")) return selfTest();

    auto parsed = vmr::parseOptions({argv + 1, argv + argc}, vmr::environment);
    if (const auto* problem = std::get_if<std::string>(&parsed)) {
        std::fprintf(stderr, "velmora: %s\nvelmora --help lists the options.\n", problem->c_str());
        return 2;
    }
    const auto& options = std::get<vmr::Options>(parsed);
    if (options.help) {
        vmr::Log::standardOutput().lines(vmr::usageText());
        return 0;
    }
    if (options.version) {
        vmr::Log::standardOutput().lines("Velmora " + std::string(vmr::versionText) + " (build " +
                                         std::to_string(vmr::buildNumber) + ")");
        return 0;
    }
    vmr::Perf::shared().startUp("main");
    auto start = std::make_unique<vmr::ProgramStart>(options);
    if (start->practice()) vmr::Perf::shared().startUp("relay");
    if (start->failure()) {
        std::fprintf(stderr, "velmora: %s\n", start->failure()->c_str());
        return 1;
    }
#ifdef VMR_WITH_QT
    if (!options.headless) return vmr::runWindowProgram(std::move(start), options, argc, argv);
#endif
    return vmr::runHeadless(*start);
}
