// Chart templates that the service keeps for a signed-in person.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "base/Json.h"
#include "base/JsonMembers.h"
#include "services/cloud/FirebaseRESTAuth.h"

/// The client of two functions of the service. What comes back is the answer or why there is none, for the person, on
/// the HTTP client's queue; within the call where nothing can be sent.
namespace vmr::TemplatesService {

/// The slots of a pair of symbol and source, by key, in order.
inline constexpr std::array<const char*, 3> slotKeys{"slot_1", "slot_2", "slot_3"};

/// A saved template.
struct Slot {
    JsonMembers config;  ///< the template
    std::optional<double> atmOffset;
    std::optional<std::string> savedAt;  ///< as the server wrote it, without control characters
    bool operator==(const Slot&) const = default;
};

/// What the service has for a pair.
struct List {
    std::optional<std::string> preferred;    ///< the key of the preferred slot
    std::map<std::string, Slot> savedSlots;  ///< by key; those that are there ("slots" alone is a macro of Qt's)
    bool operator==(const List&) const = default;
};

template <class Result>
using Done = std::function<void(std::variant<Result, std::string>)>;

/// Posts `data` to the function `name`, as who is signed in, and gives the "result" object of the reply, which may be
/// missing. The HTTP status says nothing.
void call(const std::string& name, const JsonMembers& data, FirebaseRESTAuth& auth, Done<Json> done);

/// The slots of the pair `symbolSource`.
void load(const std::string& symbolSource, FirebaseRESTAuth& auth, Done<List> done);

/// Saves a template in a slot, which becomes the preferred one. `atmOffset` is kept with it.
void save(const std::string& symbolSource, const std::string& slot, const JsonMembers& config, double atmOffset,
          FirebaseRESTAuth& auth, Done<Json> done);

/// The "result" of a reply's body, missing where there is none; or what the reply says is wrong.
std::variant<Json, std::string> readReply(std::string_view body);

/// The slots that a "result" tells. A slot without a usable template is there all the same.
List readList(JsonView result);

}  // namespace vmr::TemplatesService
