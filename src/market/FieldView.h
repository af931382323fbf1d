// The fields of a derived channel as one expiration sees them, without a copy.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "base/Json.h"

namespace vmr {

/// Fields of a derived channel as patched by the feed.
using DerivedFields = std::map<std::string, Json>;

/// Aggregate fields, overlaid with those of one expiration: a key that the slice has, null included, wins. Valid while
/// the map and the slice's document live.
class FieldView {
 public:
    FieldView(const DerivedFields& aggregate) : aggregate_(aggregate) {}
    FieldView(const DerivedFields& aggregate, JsonView slice) : aggregate_(aggregate), slice_(slice) {}

    /// Overlaid with the object under `expiration` in `byExpiration`; the aggregate alone when that is missing or the
    /// expiration is empty.
    static FieldView forExpiration(const DerivedFields& aggregate, std::string_view expiration) {
        const JsonView slice = expiration.empty() ? JsonView() : FieldView(aggregate)["byExpiration"][expiration];
        return FieldView(aggregate, slice.isObject() ? slice : JsonView());
    }

    /// Missing when neither has the key.
    JsonView operator[](std::string_view key) const {
        const JsonView own = slice_[key];
        if (own.kind() != JsonView::Kind::missing) return own;
        const auto found = aggregate_.find(std::string(key));
        return found == aggregate_.end() ? JsonView() : JsonView(found->second);
    }

 private:
    const DerivedFields& aggregate_;
    JsonView slice_;
};

}  // namespace vmr
