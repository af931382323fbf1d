// Decoded JSON: an immutable document and small handles into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// A decoded value, not owning: 24 bytes, copied freely, valid while the `Json` it came from lives. Reading is safe
/// from any thread. A default-made view is `missing`, which every reader takes like an absent key.
class JsonView {
 public:
    enum class Kind : std::uint8_t {
        missing,
        null,
        boolean,
        integer,
        unsignedInteger,
        floating,
        string,
        array,
        object
    };

    JsonView() = default;

    Kind kind() const { return kind_; }
    /// Absent or JSON null.
    bool isNothing() const { return kind_ <= Kind::null; }
    /// Written as a number: an integer within 64 bits, an unsigned one above that range, or a floating one.
    bool isNumber() const { return kind_ >= Kind::integer && kind_ <= Kind::floating; }
    bool isString() const { return kind_ == Kind::string; }
    bool isArray() const { return kind_ == Kind::array; }
    bool isObject() const { return kind_ == Kind::object; }

    /// Each reads its own kind and gives the zero of the type for any other.
    bool boolean() const;
    std::int64_t integer() const;
    std::uint64_t unsignedInteger() const;
    double floating() const;
    std::string_view string() const;
    /// Any number as a double; 0 for no number.
    double number() const;

    /// The member of an object; missing when there is none or this is no object. With a repeated key, the first.
    JsonView operator[](std::string_view key) const;

    /// Elements of an array or members of an object (exact up to 16 million); 0 for other kinds.
    std::size_t size() const;

    /// Whether both stand at one place of one living document; false for missing.
    bool isSame(JsonView other) const { return kind_ != Kind::missing && place_ == other.place_; }

    /// Compact JSON text of this value; "null" for missing.
    std::string text() const;

    class ItemIterator;
    class MemberIterator;
    struct ItemRange;
    struct MemberRange;
    /// The elements of an array, in order; empty for other kinds.
    ItemRange items() const;
    /// The members of an object, in order, as `JsonMember`; empty for other kinds.
    MemberRange members() const;

 protected:
    friend class Json;
    struct Place {
        const void* document = nullptr;
        std::size_t index = 0;
        bool operator==(const Place&) const = default;
    };
    explicit JsonView(Place place);
    Place place_;
    Kind kind_ = Kind::missing;
};

/// One member of an object.
struct JsonMember {
    std::string_view key;
    JsonView value;
};

class JsonView::ItemIterator {
 public:
    using value_type = JsonView;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;
    using pointer = const JsonView*;
    using reference = JsonView;
    JsonView operator*() const { return JsonView(place_); }
    ItemIterator& operator++();
    bool operator==(const ItemIterator&) const = default;

 private:
    friend class JsonView;
    JsonView::Place place_;
};

class JsonView::MemberIterator {
 public:
    using value_type = JsonMember;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;
    using pointer = const JsonMember*;
    using reference = JsonMember;
    JsonMember operator*() const;
    MemberIterator& operator++();
    bool operator==(const MemberIterator&) const = default;

 private:
    friend class JsonView;
    JsonView::Place place_;
};

struct JsonView::ItemRange {
    ItemIterator first, last;
    ItemIterator begin() const { return first; }
    ItemIterator end() const { return last; }
};
struct JsonView::MemberRange {
    MemberIterator first, last;
    MemberIterator begin() const { return first; }
    MemberIterator end() const { return last; }
};

/// A value that keeps its document alive. Copies share the document; the last one to go frees it (a large document is
/// freed on a background thread, so that dropping it never holds up the caller).
class Json : public JsonView {
 public:
    /// Missing.
    Json() = default;

    /// Decodes one JSON text (RFC 8259, UTF-8). Nothing when it is not well-formed. A number that no double holds reads
    /// as the text "inf" or "-inf", half a surrogate pair as U+FFFD. Any thread.
    static std::optional<Json> parse(std::string_view text);

    /// An owning handle to `view`, which must lie in this document.
    Json at(JsonView view) const { return Json(document_, view); }

    /// The same value in a document of its own, so that it does not keep a large message alive.
    Json detached() const;

    /// Whether both are values of one document; false for missing.
    bool sharesDocument(const Json& other) const { return document_ && document_ == other.document_; }

    /// Whether `view` lies in this value's document; false for missing.
    bool owns(JsonView view) const;

    /// Bytes that the document holds, roughly; 0 for missing.
    std::size_t documentBytes() const;

 private:
    struct Document;
    Json(std::shared_ptr<const Document> document, JsonView view) : JsonView(view), document_(std::move(document)) {}
    std::shared_ptr<const Document> document_;
};

}  // namespace vmr
