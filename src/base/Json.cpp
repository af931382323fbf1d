#include "base/Json.h"

#include <simdjson.h>

#include <bit>
#include <type_traits>

#include "base/JsonRepair.h"
#include "base/Reaper.h"

namespace vmr {

namespace dom = simdjson::dom;

namespace {
// A view stores the two words of simdjson's handle without its header; all its handles are these two words.
struct Words {
    const void* document;
    std::size_t index;
};
template <class T>
constexpr bool isTwoWords = sizeof(T) == sizeof(Words) && std::is_trivially_copyable_v<T>;
static_assert(isTwoWords<dom::element> && isTwoWords<dom::array::iterator> && isTwoWords<dom::object::iterator> &&
              isTwoWords<dom::array> && isTwoWords<dom::object>);

template <class T, class Place>
T handle(Place place) {
    return std::bit_cast<T>(Words{place.document, place.index});
}
template <class Place, class T>
Place placeOf(T value) {
    const auto words = std::bit_cast<Words>(value);
    return Place{words.document, words.index};
}

constexpr std::size_t largeDocument = 256 * 1024;
}  // namespace

struct Json::Document {
    dom::document document;
    std::size_t bytes = 0;
};

JsonView::JsonView(Place place) : place_(place) {
    switch (handle<dom::element>(place).type()) {
        case dom::element_type::ARRAY:
            kind_ = Kind::array;
            break;
        case dom::element_type::OBJECT:
            kind_ = Kind::object;
            break;
        case dom::element_type::INT64:
            kind_ = Kind::integer;
            break;
        case dom::element_type::UINT64:
            kind_ = Kind::unsignedInteger;
            break;
        case dom::element_type::DOUBLE:
            kind_ = Kind::floating;
            break;
        case dom::element_type::STRING:
            kind_ = Kind::string;
            break;
        case dom::element_type::BOOL:
            kind_ = Kind::boolean;
            break;
        case dom::element_type::NULL_VALUE:
            kind_ = Kind::null;
            break;
    }
}

bool JsonView::boolean() const {
    return kind_ == Kind::boolean && handle<dom::element>(place_).get_bool().value_unsafe();
}
std::int64_t JsonView::integer() const {
    return kind_ == Kind::integer ? handle<dom::element>(place_).get_int64().value_unsafe() : 0;
}
std::uint64_t JsonView::unsignedInteger() const {
    return kind_ == Kind::unsignedInteger ? handle<dom::element>(place_).get_uint64().value_unsafe() : 0;
}
double JsonView::floating() const {
    return kind_ == Kind::floating ? handle<dom::element>(place_).get_double().value_unsafe() : 0;
}
std::string_view JsonView::string() const {
    return kind_ == Kind::string ? handle<dom::element>(place_).get_string().value_unsafe() : std::string_view();
}

double JsonView::number() const {
    switch (kind_) {
        case Kind::integer:
            return static_cast<double>(integer());
        case Kind::unsignedInteger:
            return static_cast<double>(unsignedInteger());
        case Kind::floating:
            return floating();
        default:
            return 0;
    }
}

JsonView JsonView::operator[](std::string_view key) const {
    if (kind_ != Kind::object) return {};
    dom::element found;
    if (handle<dom::element>(place_).get_object().value_unsafe().at_key(key).get(found) != simdjson::SUCCESS) return {};
    return JsonView(placeOf<Place>(found));
}

std::size_t JsonView::size() const {
    if (kind_ == Kind::array) return handle<dom::element>(place_).get_array().value_unsafe().size();
    if (kind_ == Kind::object) return handle<dom::element>(place_).get_object().value_unsafe().size();
    return 0;
}

std::string JsonView::text() const {
    if (kind_ == Kind::missing) return "null";
    return simdjson::minify(handle<dom::element>(place_));
}

JsonView::ItemRange JsonView::items() const {
    ItemRange range;
    if (kind_ == Kind::array) {
        const dom::array array = handle<dom::element>(place_).get_array().value_unsafe();
        range.first.place_ = placeOf<Place>(array.begin());
        range.last.place_ = placeOf<Place>(array.end());
    }
    return range;
}

JsonView::MemberRange JsonView::members() const {
    MemberRange range;
    if (kind_ == Kind::object) {
        const dom::object object = handle<dom::element>(place_).get_object().value_unsafe();
        range.first.place_ = placeOf<Place>(object.begin());
        range.last.place_ = placeOf<Place>(object.end());
    }
    return range;
}

JsonView::ItemIterator& JsonView::ItemIterator::operator++() {
    auto iterator = handle<dom::array::iterator>(place_);
    ++iterator;
    place_ = placeOf<Place>(iterator);
    return *this;
}

JsonView::MemberIterator& JsonView::MemberIterator::operator++() {
    auto iterator = handle<dom::object::iterator>(place_);
    ++iterator;
    place_ = placeOf<Place>(iterator);
    return *this;
}

JsonMember JsonView::MemberIterator::operator*() const {
    const auto iterator = handle<dom::object::iterator>(place_);
    return {iterator.key(), JsonView(placeOf<Place>(iterator.value()))};
}

std::optional<Json> Json::parse(std::string_view text) {
    thread_local dom::parser parser;
    auto owned = std::make_unique<Document>();
    auto parsed = parser.parse_into_document(owned->document, text.data(), text.size(), true);
    // whatever the decoder calls its fault, which differs between its versions: an odd value is found by looking
    if (parsed.error() != simdjson::SUCCESS) {
        if (const auto repaired = repairedJson(text))
            parsed = parser.parse_into_document(owned->document, repaired->data(), repaired->size(), true);
    }
    // one huge message must not leave its index behind for the life of the thread
    if (parser.capacity() > 8u * 1024 * 1024) parser = dom::parser();
    dom::element root;
    if (parsed.get(root) != simdjson::SUCCESS) return std::nullopt;
    owned->bytes = text.size() * 3;
    const Document* raw = owned.release();
    std::shared_ptr<const Document> document(raw, [](const Document* old) {
        if (old->bytes < largeDocument)
            delete old;
        else
            freeLater([old] { delete old; });
    });
    return Json(std::move(document), JsonView(placeOf<Place>(raw->document.root())));
}

Json Json::detached() const {
    if (kind() == Kind::missing) return {};
    return parse(text()).value_or(Json());
}

bool Json::owns(JsonView view) const {
    return view.kind() != Kind::missing && document_ &&
           view.place_.document == static_cast<const void*>(&document_->document);
}

std::size_t Json::documentBytes() const { return document_ ? document_->bytes : 0; }

}  // namespace vmr
