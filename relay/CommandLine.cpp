#include "relay/CommandLine.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>

#include "base/NumberText.h"
#include "relay/Recording.h"
#include "relay/Tape.h"

namespace vmr::relay {

namespace {
using Values = std::map<std::string, std::string>;

const std::map<std::string, std::string>& knownOptions() {
    static const std::map<std::string, std::string> known{
        {"--port", "N"},      {"--rest-port", "N"}, {"--seed", "N"},  {"--token-life", "SECONDS"},
        {"--tape", "FILE"},   {"--symbol", "SYM"},  {"--speed", "X"}, {"--clock", "ISO[@speed]"},
        {"--record", "FILE"}, {"--replay", "FILE"}, {"--busy", "X"},  {"--templates", "FILE"}};
    return known;
}

/// Splits "--name value" and "--name=value"; what is wrong, if anything.
std::string collect(const std::vector<std::string>& arguments, Values& values) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string name = arguments[i];
        std::optional<std::string> value;
        if (const auto equals = name.find('='); name.starts_with("--") && equals != name.npos) {
            value = name.substr(equals + 1);
            name.resize(equals);
        }
        const auto known = knownOptions().find(name);
        if (known == knownOptions().end()) return "unknown option " + name;
        if (!value && i + 1 < arguments.size()) value = arguments[++i];
        if (!value) return name + " needs a value: " + known->second;
        if (!values.emplace(name, *value).second) return name + " is given twice";
    }
    return {};
}

std::optional<double> positive(const std::string& text) {
    const auto value = parseDouble(text);
    return value && std::isfinite(*value) && *value > 0 ? value : std::nullopt;
}

/// Takes over the plain options; what is wrong, if anything.
std::string readPlain(const Values& values, PracticeRelayOptions& options) {
    for (const auto& [name, text] : values) {
        const auto whole = parseInt(text);
        const bool isPort = name == "--port" || name == "--rest-port";
        if (isPort && (!whole || *whole < 0 || *whole > 65535)) return name + " must be 0 to 65535, not " + text;
        if (name == "--seed" && (!whole || *whole < 0)) return "--seed must be a whole number from 0 on, not " + text;
        if (name == "--token-life" && !positive(text)) return "--token-life must be seconds above 0, not " + text;
        if (name == "--busy" && (!positive(text) || *positive(text) > PracticeRelayOptions::busiest))
            return "--busy must be a number above 0, at most 1000, not " + text;
        if (name == "--speed" && (!positive(text) || *positive(text) > Clock::fastest))
            return "--speed must be a number above 0, at most 10000, not " + text;
        if (name == "--port") options.relayPort = static_cast<int>(*whole);
        if (name == "--rest-port") options.restPort = static_cast<int>(*whole);
        if (name == "--seed") options.seed = static_cast<std::uint64_t>(*whole);
        if (name == "--busy") options.busy = *positive(text);
        if (name == "--token-life") options.tokenLife = *positive(text);
    }
    return {};
}

std::string readFiles(const Values& values, PracticeRelayOptions& options) {
    const bool file = values.contains("--tape");
    const bool replay = values.contains("--replay");
    if (file != values.contains("--symbol")) return "--tape and --symbol go together";
    if (file && replay) return "--tape and --replay contradict each other";
    if (replay) options.replay = values.at("--replay");
    if (values.contains("--record")) options.record = values.at("--record");
    if (values.contains("--templates")) options.templates = values.at("--templates");
    if (!file && !replay && values.contains("--speed"))
        return "--speed goes with --tape or --replay; --clock takes a speed of its own, as in 2026-06-10T10:00@60";
    if (values.contains("--speed") && values.contains("--clock")) return "--speed and --clock contradict each other";
    if (file) options.tape = TapeOptions{values.at("--tape"), values.at("--symbol")};
    return {};
}

struct FileStart {
    std::optional<double> moment;
    std::string error;
};

/// Where the tape or the recording starts, if one is to be played.
FileStart fileStart(const PracticeRelayOptions& options) {
    FileStart start;
    if (options.replay) {
        start.moment = recordingStart(*options.replay, start.error);
    } else if (options.tape) {
        if (const auto span = tapeSpan(options.tape->file, start.error)) start.moment = tapeStart(*span);
    }
    return start;
}

std::string readClock(const Values& values, const std::optional<std::string>& environment, RelayCommandLine& line) {
    const bool own = values.contains("--clock");
    if (own || (environment && !environment->empty() && !values.contains("--speed"))) {
        const std::string& text = own ? values.at("--clock") : *environment;
        line.clock = parseClockSetting(text);
        return line.clock ? "" : std::string(own ? "--clock" : "VMR_CLOCK") + " is no moment: " + text;
    }
    const auto start = fileStart(line.relay);
    if (!start.moment) return start.error;
    line.clock = ClockSetting{*start.moment, values.contains("--speed") ? *positive(values.at("--speed")) : 1.0};
    return {};
}
}  // namespace

RelayCommandLine readRelayCommandLine(const std::vector<std::string>& arguments,
                                      const std::function<std::optional<std::string>(const char*)>& lookup) {
    RelayCommandLine line;
    for (const std::string& argument : arguments) line.help = line.help || argument == "--help" || argument == "-h";
    if (line.help) return line;
    Values values;
    line.error = collect(arguments, values);
    if (line.error.empty()) line.error = readPlain(values, line.relay);
    if (line.error.empty()) line.error = readFiles(values, line.relay);
    if (line.error.empty()) line.error = readClock(values, lookup("VMR_CLOCK"), line);
    return line;
}

std::string relayHelp() {
    return R"(velmora-relay: a practice market on this machine, for the client, tests and demonstrations

  --port N            port of the relay's WebSocket (default: a free one)
  --rest-port N       port of the sign-in endpoints (default: a free one)
  --seed N            which market; the same seed and clock give the same bars (default: 1)
  --busy X            X times as many trades as usual, from the start on (a history stays as it was); 500 is some
                      2,000 trades a second of NQ in the morning and more of ES; to 1000
  --token-life S      real seconds that an identity token lives (default: 3600)
  --clock ISO[@speed] market time at the start and how fast it runs, as in 2026-06-10T10:00@60;
                      New York time unless it says otherwise; the speed is at most 10000 (default: VMR_CLOCK, else this machine's time)
  --tape FILE         play recorded trades: CSV, plain or .gz, with a timestamp and a price column
  --symbol SYM        which futures root or stock the tape is
  --record FILE       write all that subscribers get into a recording
  --replay FILE       play a recording in place of the market, from its first message on
  --speed X           how fast the tape or the recording plays, without --clock (default: 1)
  --templates FILE    keep chart templates in this file, for later runs, too (default: in memory);
                      one program at a time: it reads the file when it starts, and writes all of it
  --help              this text

It listens on 127.0.0.1 only. Type help on its standard input for the faults that it can make.
)";
}

std::string momentText(double moment) {
    using namespace std::chrono;
    const sys_seconds time{seconds{static_cast<std::int64_t>(std::floor(moment))}};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

}  // namespace vmr::relay
