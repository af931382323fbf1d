#include "app/Options.h"

#include <cmath>

#include "base/Clock.h"
#include "base/NumberText.h"
#include "relay/PracticeRelay.h"

namespace vmr {

namespace {
using Problem = std::optional<std::string>;

Problem readPositive(const std::string& name, const std::string& text, double& out) {
    const auto value = parseDouble(text);
    if (!value || !std::isfinite(*value) || *value <= 0) return name + " needs a number above 0, not \"" + text + "\"";
    out = *value;
    return std::nullopt;
}

Problem readClock(const std::string& name, const std::string& text, std::optional<ClockSetting>& out) {
    out = parseClockSetting(text);
    if (!out)
        return name + " needs a moment such as 2026-06-10T10:00:00 or 2026-06-10T14:00Z@60 (at most @10000), not \"" +
               text + "\"";
    return std::nullopt;
}

Problem readSize(const std::string& text, Options& out) {
    const auto cross = text.find('x');
    const auto width = cross == std::string::npos ? std::nullopt : parseInt(text.substr(0, cross));
    const auto height = cross == std::string::npos ? std::nullopt : parseInt(text.substr(cross + 1));
    if (!width || !height || *width < 100 || *height < 100 || *width > 16384 || *height > 16384)
        return "--window needs a size such as 1400x900, not \"" + text + "\"";
    out.width = static_cast<int>(*width);
    out.height = static_cast<int>(*height);
    return std::nullopt;
}

Problem readValue(const std::string& name, const std::string& value, Options& out) {
    if (name == "--seconds") return readPositive(name, value, out.seconds);
    if (name == "--token-life") return readPositive(name, value, out.tokenLife);
    if (name == "--clock") return readClock(name, value, out.clock);
    if (name == "--window") return readSize(value, out);
    if (name == "--busy") {
        if (auto problem = readPositive(name, value, out.busy)) return problem;
        if (out.busy > relay::PracticeRelayOptions::busiest) return "--busy goes up to 1000, not " + value;
    } else if (name == "--speed") {
        double speed = 1;
        if (auto problem = readPositive(name, value, speed)) return problem;
        if (speed > Clock::fastest) return "--speed goes up to 10000, not " + value;
        out.speed = speed;
    } else if (name == "--seed") {
        const auto seed = parseInt(value);
        if (!seed || *seed < 0) return "--seed needs a whole number, not \"" + value + "\"";
        out.seed = static_cast<std::uint64_t>(*seed);
    } else if (name == "--state") {
        out.stateFile = value;
    } else if (name == "--screenshot") {
        out.screenshotFile = value;
    } else if (name == "--tape") {
        out.tapeFile = value;
    } else if (name == "--templates") {
        out.templatesFile = value;
    } else if (name == "--symbol") {
        out.tapeSymbol = value;
    } else {
        return "unknown option " + name;
    }
    return std::nullopt;
}

Problem check(const Options& out) {
    const bool anyTape = !out.tapeFile.empty() || !out.tapeSymbol.empty();
    if (anyTape && !out.practice) return "--tape and --symbol need --practice";
    if (!out.templatesFile.empty() && !out.practice) return "--templates needs --practice";
    if (anyTape && (out.tapeFile.empty() || out.tapeSymbol.empty())) return "--tape FILE and --symbol SYM go together";
    if (out.speed && out.tapeFile.empty()) return "--speed needs --tape; use --clock MOMENT@SPEED otherwise";
    if (out.headless && !out.screenshotFile.empty()) return "--screenshot needs a window";
    if (out.headless && out.bench.bench) return "--perf-bench needs a window";
    return std::nullopt;
}
}  // namespace

std::variant<Options, std::string> parseOptions(const std::vector<std::string>& arguments,
                                                const EnvironmentLookup& lookup) {
    Options out;
    out.bench = BenchSettings::fromEnvironment(lookup);
    out.pressure = HfPressure::switchesOf(lookup("VMR_HFP").value_or(""));
    out.strictFeed = lookup("VMR_STRICT") == "1";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string name = arguments[i];
        if (name == "--practice") {
            out.practice = true;
        } else if (name == "--headless") {
            out.headless = true;
        } else if (name == "--perf-bench") {
            out.bench.bench = true;
        } else if (name == "--help" || name == "-h") {
            out.help = true;
        } else if (name == "--version") {
            out.version = true;
        } else {
            std::optional<std::string> value;
            if (const auto equals = name.find('='); name.starts_with("--") && equals != std::string::npos) {
                value = name.substr(equals + 1);
                name.resize(equals);
            } else if (i + 1 < arguments.size()) {
                value = arguments[++i];
            }
            if (!value)
                return readValue(name, "", out) == "unknown option " + name ? "unknown option " + name
                                                                            : name + " needs a value";
            if (auto problem = readValue(name, *value, out)) return *problem;
        }
    }
    if (const auto set = lookup("VMR_CLOCK"); set && !out.clock)
        if (auto problem = readClock("VMR_CLOCK", *set, out.clock)) return *problem;
    if (auto problem = check(out)) return *problem;
    return out;
}

std::string usageText() {
    return "Velmora: index futures and stocks with options positioning, live.\n"
           "\n"
           "  velmora                the window, connected to the relay of VMR_RELAY_URL\n"
           "  velmora --practice     the window with a practice market of its own: nothing to set up\n"
           "\n"
           "  --version              the version and the build number\n"
           "  --headless             no window: log lines out, commands in (one a line; \"help\" lists them)\n"
           "  --seconds N            end after N seconds\n"
           "  --state FILE           write the state document at the end\n"
           "  --screenshot FILE      save the window's picture at the end; of several, FILE-1 and so on\n"
           "  --window WxH           size of the window\n"
           "  --clock MOMENT[@SPEED] start the market's clock at an ISO 8601 moment (New York without an offset) and\n"
           "                         run it at that speed, at most 10000; also VMR_CLOCK\n"
           "  --perf-bench           measure this machine: everything on, a synthetic drag, a report, the end;\n"
           "                         VMR_BENCH_WARMUP and VMR_BENCH_SECS are its seconds (6 and 10)\n"
           "With --practice:\n"
           "  --seed N               another market\n"
           "  --busy X               X times as many trades as usual, from the start on\n"
           "  --tape FILE            play recorded trades (CSV or .csv.gz) as the symbol's market\n"
           "  --symbol SYM           the symbol that the tape is, such as GC\n"
           "  --speed X              speed of the tape\n"
           "  --templates FILE       keep chart templates in this file, for later runs, too; one program at a time\n"
           "  --token-life S         seconds that an identity token lives\n";
}

}  // namespace vmr
