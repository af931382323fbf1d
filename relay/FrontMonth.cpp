#include "relay/FrontMonth.h"

#include <chrono>

#include "relay/Instruments.h"

namespace vmr::relay {

namespace {
using namespace std::chrono;

constexpr std::string_view monthLetters = "FGHJKMNQUVXZ";

enum class Cycle { none, quarterly, even, monthly };

Cycle cycleOf(std::string_view root) {
    const Instrument* instrument = findInstrument(Family::futures, root);
    if (!instrument) return Cycle::none;
    if (root == "GC") return Cycle::even;
    return root == "CL" ? Cycle::monthly : Cycle::quarterly;
}

bool listed(Cycle cycle, unsigned month) {
    if (cycle == Cycle::quarterly) return month % 3 == 0;
    return cycle == Cycle::monthly || month % 2 == 0;
}

/// From this day on the next contract is in front.
sys_days rollDay(Cycle cycle, year_month contract) {
    if (cycle == Cycle::quarterly) return sys_days{contract / Thursday[2]};
    return sys_days{(contract - months{1}) / day{cycle == Cycle::even ? 27u : 19u}};
}
}  // namespace

std::string frontContract(std::string_view root, std::int64_t date) {
    const Cycle cycle = cycleOf(root);
    if (cycle == Cycle::none) return {};
    const sys_days today{days{date}};
    const year_month_day civil{today};
    year_month contract = civil.year() / civil.month();
    while (!listed(cycle, static_cast<unsigned>(contract.month())) || today >= rollDay(cycle, contract))
        contract += months{1};
    const int digit = static_cast<int>(contract.year()) % 10;
    return std::string(root) + monthLetters[static_cast<unsigned>(contract.month()) - 1] +
           static_cast<char>('0' + digit);
}

std::map<std::string, std::string> frontContracts(std::int64_t date) {
    std::map<std::string, std::string> contracts;
    for (const Instrument& one : instruments()) {
        if (one.family == Family::futures) contracts[std::string(one.symbol)] = frontContract(one.symbol, date);
    }
    return contracts;
}

}  // namespace vmr::relay
