// Any bytes as JSON and as a number: every value of the document through every lenient reader.
#include "FuzzEntry.h"
#include "base/NumberText.h"
#include "market/Coerce.h"
#include "model/PayloadBrief.h"

namespace vmr::fuzz {
namespace {

void readAll(JsonView value, int depth) {
    const auto number = coerce::dbl(value);
    require(coerce::boolean(value) == (number && *number != 0));
    RepairTally tally(strict());
    survives([&] { require(coerce::intVal(value, tally) == coerce::intv(value, tally).value_or(0)); });
    require(tally.count() % 2 == 0);
    survives([&] { coerce::minuteInt(value, tally); });
    if (depth > 100) return;
    std::size_t count = 0;
    for (const JsonView item : value.items()) {
        readAll(item, depth + 1);
        ++count;
    }
    for (const auto& [key, member] : value.members()) {
        require(value[key].kind() != JsonView::Kind::missing);
        readAll(member, depth + 1);
        ++count;
    }
    require(count == value.size());
}
}  // namespace

void take(std::string_view text) {
    if (const auto number = parseDouble(text); number && *number == *number)
        require(parseDouble(doubleText(*number)) == number);
    if (const auto integer = parseInt(text)) require(parseDouble(text) == static_cast<double>(*integer));
    const auto json = Json::parse(text);
    if (!json) return;
    readAll(*json, 0);
    const auto again = Json::parse(json->text());
    require(again && again->text() == json->text());
    require(json->detached().text() == json->text());
    require(briefForm(*json).size() < text.size() + 400);
}

}  // namespace vmr::fuzz
