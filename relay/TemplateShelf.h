// The service's chart templates: slots of each account and each pair of symbol and source.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/Clock.h"
#include "base/Json.h"
#include "base/JsonMembers.h"
#include "relay/Accounts.h"
#include "relay/RestMessages.h"

namespace vmr::relay {

/// Keeps what clients save, in memory and, where there is a file, on the disk too. Saving in a slot makes it the
/// preferred one of its pair. One thread.
class TemplateShelf {
 public:
    static constexpr std::size_t largestConfig = 65536;  ///< bytes
    static constexpr std::size_t mostPairs = 300;        ///< of an account
    static constexpr std::size_t longestPair = 64;       ///< bytes of its name

    /// Both outlive it; `clock` tells when a template was saved, in market time.
    TemplateShelf(const Accounts& accounts, const Clock& clock) : accounts_(accounts), clock_(clock) {}

    /// Reads the templates of `file`, which need not exist yet, and keeps them there from now on: one process at a
    /// time. What is wrong; a file that is refused, such as a link or one beyond the limits, stays as it is.
    std::optional<std::string> keepIn(const std::filesystem::path& file);

    /// Answers /loadChartTemplates and /saveChartTemplate, as an account's identity token asks; nothing for any other
    /// path.
    std::optional<RestReply> answer(const RestRequest& request, std::string_view path);

    /// The console's "error TEXT", "status CODE", "delay SECONDS", "text RAW" or "ok": how each answer goes wrong from
    /// now on. Answers "ok ..." or "error: ...".
    std::string command(std::string_view text);

 private:
    struct Slot {
        std::string config;  // JSON
        double atmOffset = 0;
        std::string savedAt;
    };
    struct Pair {
        std::string preferred;
        std::map<std::string, Slot> slots;
    };
    using Pairs = std::map<std::string, Pair>;
    using Shelf = std::map<std::string, Pairs>;  // of each account
    static JsonMembers told(const Pair& pair);
    static bool isPair(std::string_view name) { return !name.empty() && name.size() <= longestPair; }
    static std::optional<Pair> readPair(JsonView told);
    static std::optional<Shelf> readShelf(JsonView told);
    /// What is wrong with the answers on purpose.
    struct Faults {
        std::optional<std::string> body;  // of each answer
        int bodyStatus = 200;
        std::optional<int> status;
        double delay = 0;
    };
    RestReply serve(const RestRequest& request, bool saving);
    RestReply result(const Pairs& pairs, const std::string& pair) const;
    RestReply save(Pairs& pairs, const std::string& pair, JsonView data);
    std::string fileText() const;

    const Accounts& accounts_;
    const Clock& clock_;
    Shelf accountsPairs_;
    std::optional<std::filesystem::path> file_;
    Faults faults_;
};

}  // namespace vmr::relay
