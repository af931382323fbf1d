#include "relay/TemplateShelf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "base/CommandTable.h"
#include "base/FileReplace.h"
#include "base/NumberText.h"
#include "base/PrivateFile.h"
#include "relay/CommandLine.h"

namespace vmr::relay {

namespace {
constexpr std::array<std::string_view, 3> slotKeys{"slot_1", "slot_2", "slot_3"};
constexpr std::string_view bearer = "Bearer ";
constexpr double longestDelay = 3600;  // seconds

bool isSlot(std::string_view key) { return std::find(slotKeys.begin(), slotKeys.end(), key) != slotKeys.end(); }

/// An answer of any other status has no body, or is none that a client waits for.
bool mayHaveBody(std::int64_t status) { return status >= 200 && status <= 599 && status != 204 && status != 304; }

/// `moment` in ISO 8601 with thousandths of a second, UTC.
std::string stamp(double moment) {
    const double whole = std::floor(moment);
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03d", static_cast<int>((moment - whole) * 1000) % 1000);
    std::string text = momentText(whole);
    return text.insert(text.size() - 1, fraction);
}
}  // namespace

JsonMembers TemplateShelf::told(const Pair& pair) {
    JsonMembers out;
    if (!pair.preferred.empty()) out["preferred"] = jsonString(pair.preferred);
    for (const auto& [key, slot] : pair.slots)
        out[key] = jsonObject({{"config", slot.config},
                               {"atmOffset", doubleText(slot.atmOffset)},
                               {"savedAt", jsonString(slot.savedAt)}});
    return out;
}

std::optional<TemplateShelf::Pair> TemplateShelf::readPair(JsonView told) {
    if (!told.isObject()) return std::nullopt;
    Pair pair;
    for (const auto& [key, value] : told.members()) {
        if (key == "preferred" && value.isString()) {
            pair.preferred = value.string();
            continue;
        }
        if (!isSlot(key) || !value["config"].isObject() || !value["savedAt"].isString()) return std::nullopt;
        std::string config = value["config"].text();
        if (config.size() > largestConfig) return std::nullopt;
        pair.slots[std::string(key)] = {std::move(config), value["atmOffset"].number(),
                                        std::string(value["savedAt"].string())};
    }
    return pair;
}

std::optional<TemplateShelf::Shelf> TemplateShelf::readShelf(JsonView told) {
    if (!told.isObject()) return std::nullopt;
    Shelf out;
    for (const auto& [account, pairs] : told.members()) {
        if (!pairs.isObject()) return std::nullopt;
        Pairs& kept = out[std::string(account)];
        for (const auto& [name, value] : pairs.members()) {
            auto pair = readPair(value);
            if (!pair || !isPair(name)) return std::nullopt;
            kept[std::string(name)] = std::move(*pair);
        }
        if (kept.size() > mostPairs) return std::nullopt;
    }
    return out;
}

// A file that is refused is left as it is, its permissions too.
std::optional<std::string> TemplateShelf::keepIn(const std::filesystem::path& file) {
    using std::filesystem::file_type;
    std::error_code ignored;
    const file_type kind = std::filesystem::symlink_status(file, ignored).type();
    if (kind == file_type::not_found) {
        auto wrong = replacePrivateFile(file, fileText());
        if (!wrong) file_ = file;
        return wrong;
    }
    const auto text = kind == file_type::regular ? readFile(file) : std::nullopt;
    if (!text) return "cannot read the file " + file.string();
    const auto stored = Json::parse(*text);
    auto shelf = stored ? readShelf(*stored) : std::nullopt;
    if (!shelf) return "the file " + file.string() + " holds no templates";
    if (readPrivateFile(file) != text) return "the file " + file.string() + " cannot be this user's alone";
    accountsPairs_ = std::move(*shelf);
    file_ = file;
    return std::nullopt;
}

std::string TemplateShelf::fileText() const {
    JsonMembers accounts;
    for (const auto& [account, pairs] : accountsPairs_) {
        JsonMembers all;
        for (const auto& [name, pair] : pairs) all[name] = jsonObject(told(pair));
        accounts[account] = jsonObject(all);
    }
    return jsonObject(accounts);
}

std::optional<RestReply> TemplateShelf::answer(const RestRequest& request, std::string_view path) {
    const bool saving = path == "/saveChartTemplate";
    if (!saving && path != "/loadChartTemplates") return std::nullopt;
    RestReply reply = serve(request, saving);
    if (faults_.status) reply.status = *faults_.status;
    reply.delay = faults_.delay;
    return reply;
}

RestReply TemplateShelf::serve(const RestRequest& request, bool saving) {
    if (request.method != "POST") return fault(405, "Method not allowed");
    const std::string& said = request.authorization;
    if (!said.starts_with(bearer) || !accounts_.accepts(said.substr(bearer.size())))
        return fault(401, "Request had invalid authentication credentials.");
    if (faults_.body) return {faults_.bodyStatus, *faults_.body};
    const auto body = Json::parse(request.body);
    const JsonView data = body ? (*body)["data"] : JsonView();
    if (!data.isObject()) return fault(400, "Invalid JSON payload received.");
    const std::string pair(data["symbolSource"].string());
    if (!isPair(pair)) return fault(400, "INVALID_SYMBOL_SOURCE");
    Pairs& pairs = accountsPairs_[std::string(Accounts::localId)];
    return saving ? save(pairs, pair, data) : result(pairs, pair);
}

RestReply TemplateShelf::result(const Pairs& pairs, const std::string& name) const {
    const auto pair = pairs.find(name);
    return {200, jsonObject({{"result", jsonObject(pair == pairs.end() ? JsonMembers() : told(pair->second))}})};
}

RestReply TemplateShelf::save(Pairs& pairs, const std::string& name, JsonView data) {
    const std::string key(data["slot"].string());
    if (!isSlot(key)) return fault(400, "INVALID_SLOT");
    if (!data["config"].isObject()) return fault(400, "INVALID_CONFIG");
    std::string config = data["config"].text();
    if (config.size() > largestConfig) return fault(400, "The template is too large.");
    if (!pairs.contains(name) && pairs.size() >= mostPairs) return fault(429, "Too many charts have templates.");
    const Pair before = pairs[name];
    Pair& pair = pairs[name];
    pair.preferred = key;
    pair.slots[key] = {std::move(config), data["atmOffset"].number(), stamp(clock_.now())};
    const auto wrong = file_ ? replacePrivateFile(*file_, fileText()) : std::nullopt;
    if (!wrong) return result(pairs, name);
    pair = before;  // as the file has it
    if (pair.slots.empty()) pairs.erase(name);
    return fault(500, *wrong);
}

std::string TemplateShelf::command(std::string_view text) {
    CommandWords words(text);
    const std::string what = words.next();
    const std::string rest(words.rest());
    if (what == "ok" && rest.empty()) {
        faults_ = {};
        return "ok templates";
    }
    if (what == "error" && !rest.empty()) {
        faults_.body = jsonObject({{"error", jsonObject({{"message", jsonString(rest)}})}});
        faults_.bodyStatus = 400;
        return "ok templates fail";
    }
    if (what == "text") {
        faults_.body = rest;
        faults_.bodyStatus = 200;
        return "ok templates answer that text";
    }
    if (const auto status = what == "status" ? parseInt(rest) : std::nullopt; status && mayHaveBody(*status)) {
        faults_.status = static_cast<int>(*status);
        return "ok templates status " + rest;
    }
    if (const auto delay = what == "delay" ? parseDouble(rest) : std::nullopt;
        delay && *delay >= 0 && *delay <= longestDelay) {
        faults_.delay = *delay;
        return "ok templates delay " + doubleText(*delay);
    }
    return "error: it is templates error TEXT, status 200 to 599 but not 204 or 304, delay SECONDS, text RAW, or ok";
}

}  // namespace vmr::relay
