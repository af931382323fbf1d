// Any bytes as JSON and as a number: every value of the document through every lenient reader.
#include "FuzzEntry.h"
#include "base/NumberText.h"
#include "market/Coerce.h"
#include "model/PayloadBrief.h"

namespace {
using namespace vmr;

void readAll(JsonView value, int depth) {
    const auto number = coerce::dbl(value);
    fuzz::require(coerce::boolean(value) == (number && *number != 0));
    fuzz::survives([&] { fuzz::require(coerce::intVal(value) == coerce::intv(value).value_or(0)); });
    fuzz::survives([&] { coerce::minuteInt(value); });
    if (depth > 100) return;
    std::size_t count = 0;
    for (const JsonView item : value.items()) {
        readAll(item, depth + 1);
        ++count;
    }
    for (const auto& [key, member] : value.members()) {
        fuzz::require(value[key].kind() != JsonView::Kind::missing);
        readAll(member, depth + 1);
        ++count;
    }
    fuzz::require(count == value.size());
}
}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzz::textOf(data, size);
    if (const auto number = parseDouble(text); number && *number == *number)
        fuzz::require(parseDouble(doubleText(*number)) == number);
    if (const auto integer = parseInt(text)) fuzz::require(parseDouble(text) == static_cast<double>(*integer));
    const auto json = Json::parse(text);
    if (!json) return 0;
    readAll(*json, 0);
    const auto again = Json::parse(json->text());
    fuzz::require(again && again->text() == json->text());
    fuzz::require(json->detached().text() == json->text());
    fuzz::require(briefForm(*json).size() < text.size() + 400);
    return 0;
}
